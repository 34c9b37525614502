#include "support/CommandText.h"

#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"

namespace TestSupport {

namespace {

std::string operands(const InstallCommon::LaunchdJobCommand& command) {
    return (command.isDaemon() ? "daemon " : "agent ") + command.launchdJob().label.value_or("-") + " " +
           (command.launchdJob().plistLocation() ? command.launchdJob().plistLocation()->path() : "-");
}

std::string operands(const InstallCommon::RemoveCommand& command) {
    std::string text;
    for (const auto& item : command.itemsToRemove()) {
        text += (text.empty() ? "" : ", ") + item.path.path() + (item.removeIfEmpty ? " if empty" : "");
    }
    return text;
}

std::string operands(const InstallCommon::CopyCommand& command) {
    std::string text;
    for (const auto& item : command.itemsToCopy()) {
        text += (text.empty() ? "" : ", ") + item.source.path() + " -> " + item.destination.path();
    }
    return text;
}

std::string operands(const InstallCommon::UnloadKextCommand& command) {
    const NorvikCommon::BundleInfo bundle = command.kext().bundle.value_or(NorvikCommon::BundleInfo());
    return bundle.name.value_or("-") + " " + (bundle.location ? bundle.location->path() : "-") + " " +
           bundle.bundleId.value_or("-") + " " + command.kext().ioClassName.value_or("-");
}

std::string classAndOperands(const InstallCommon::Command& command, const std::string& description) {
    if (const auto* stop = dynamic_cast<const InstallCommon::StopLaunchdJobCommand*>(&command)) {
        return "StopLaunchdJobCommand|" + description + "|" + operands(*stop);
    }
    if (const auto* start = dynamic_cast<const InstallCommon::StartLaunchdJobCommand*>(&command)) {
        return "StartLaunchdJobCommand|" + description + "|" + operands(*start);
    }
    if (const auto* remove = dynamic_cast<const InstallCommon::RemoveCommand*>(&command)) {
        return "RemoveCommand|" + description + "|" + operands(*remove);
    }
    if (const auto* copy = dynamic_cast<const InstallCommon::CopyCommand*>(&command)) {
        return "CopyCommand|" + description + "|" + operands(*copy);
    }
    if (const auto* kext = dynamic_cast<const InstallCommon::UnloadKextCommand*>(&command)) {
        return "UnloadKextCommand|" + description + "|" + operands(*kext);
    }
    if (const auto* kill = dynamic_cast<const InstallCommon::KillProcessCommand*>(&command)) {
        return "KillProcessCommand|" + description + "|" + kill->process();
    }
    if (dynamic_cast<const InstallCommon::UpdateLaunchServices*>(&command) != nullptr) {
        return "UpdateLaunchServices|" + description + "|";
    }
    return "another class|" + description + "|";
}

}  // namespace

std::vector<std::string> commandTexts(const InstallCommon::CommandList& commands) {
    std::vector<std::string> texts;
    for (const auto& command : commands) {
        texts.push_back(classAndOperands(*command, command->commandDescription()));
    }
    return texts;
}

}  // namespace TestSupport
