#include "CommandLists.h"

#include <algorithm>
#include <array>

#include "InstallCommon/CommandSuitsProvider.h"

namespace Inspect {

namespace {

using InstallCommon::CommandLists;
using InstallCommon::CommandSuitsProvider;
using InstallCommon::PayloadLocations;

constexpr PayloadUse kNoPayload{};
constexpr PayloadUse kSupportFiles{false, false, true};
constexpr PayloadUse kAll{true, true, true};

constexpr std::array kLists{
    NamedCommandList{"uninstall", "stops, unloads, closes and deletes every component", kNoPayload,
                     [](const PayloadLocations&) { return CommandSuitsProvider::makeUninstallCommands(); }},
    NamedCommandList{"cleanup", "deletes the data folders and the helper tools", kNoPayload,
                     [](const PayloadLocations&) { return CommandSuitsProvider::makeCleanupCommands(); }},
    NamedCommandList{"uninstall-all", "both, as an uninstallation sends them", kNoPayload,
                     [](const PayloadLocations&) { return CommandLists::uninstallation(); }},
    NamedCommandList{"pre-install", "copies the settings and the AV bases", kSupportFiles,
                     [](const PayloadLocations& payload) {
                         return CommandSuitsProvider::makePreInstallCommands(payload.supportFiles);
                     }},
    NamedCommandList{"install", "copies the product, starts its agents and daemons", kAll,
                     [](const PayloadLocations& payload) {
                         return CommandSuitsProvider::makeInstallCommands(
                             payload.applications, payload.launchdJobs, payload.supportFiles);
                     }},
    NamedCommandList{"post-install", "updates the Launch Services database", kNoPayload,
                     [](const PayloadLocations&) { return CommandSuitsProvider::makePostInstallCommands(); }},
    NamedCommandList{"clean-install", "pre-install, install, post-install", kAll,
                     &CommandLists::cleanInstallation},
    NamedCommandList{"update", "uninstall, install, post-install: the data stays", kAll,
                     &CommandLists::update},
    NamedCommandList{"over-install", "uninstall-all, then a clean install", kAll,
                     &CommandLists::overInstallation},
};

}  // namespace

const NamedCommandList* findCommandList(std::string_view name) {
    const auto* const found = std::find_if(
        kLists.begin(), kLists.end(), [name](const NamedCommandList& list) { return list.name == name; });
    return found != kLists.end() ? found : nullptr;
}

std::string describeCommandLists() {
    constexpr std::size_t kNameWidth = 16;
    std::string text = "Lists:";
    for (const NamedCommandList& list : kLists) {
        text += "\n  " + std::string(list.name);
        text.append(kNameWidth - list.name.size(), ' ').append(list.summary);
    }
    return text;
}

std::vector<std::string> commandListNameList() {
    std::vector<std::string> names;
    names.reserve(kLists.size());
    for (const NamedCommandList& list : kLists) {
        names.emplace_back(list.name);
    }
    return names;
}

}  // namespace Inspect
