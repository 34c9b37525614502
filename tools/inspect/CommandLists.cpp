#include "CommandLists.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "InstallCommon/CommandSuitsProvider.h"

namespace Inspect {

namespace {

using InstallCommon::CommandList;
using InstallCommon::CommandSuitsProvider;

// In the order in which an uninstallation sends them, in one message.
CommandList makeUninstallAll() {
    CommandList commands = CommandSuitsProvider::makeUninstallCommands();
    CommandList cleanup = CommandSuitsProvider::makeCleanupCommands();
    std::move(cleanup.begin(), cleanup.end(), std::back_inserter(commands));
    return commands;
}

constexpr std::array kLists{
    NamedCommandList{"uninstall", "stops, unloads, closes and deletes every component",
                     &CommandSuitsProvider::makeUninstallCommands},
    NamedCommandList{"cleanup", "deletes the data folders and the helper tools",
                     &CommandSuitsProvider::makeCleanupCommands},
    NamedCommandList{"uninstall-all", "both, as an uninstallation sends them", &makeUninstallAll},
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

std::string commandListNames() {
    std::string text;
    for (const NamedCommandList& list : kLists) {
        text += text.empty() ? "" : ", ";
        text += list.name;
    }
    return text;
}

}  // namespace Inspect
