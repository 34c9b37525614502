#include "InstallCommon/CommandSuitsProvider.h"

#include <utility>

#include "InstallCommon/CommandListBuilding.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "InstallCommon/ComponentLists.h"
#include "InstallCommon/ComponentPathProvider+Legacy.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"

namespace InstallCommon {

namespace {

CommandList uninstallCommandsUnloadLaunchdJobAgentsAndDaemons() {
    CommandList commands;
    for (const NorvikCommon::LaunchdInfo& job : ComponentLists::daemonJobs()) {
        commands.push_back(StopLaunchdJobCommand::withDaemon(describe("Unloading daemon ", *job.label), job));
    }
    for (const NorvikCommon::LaunchdInfo& job : ComponentLists::agentJobs()) {
        commands.push_back(
            StopLaunchdJobCommand::withAgent(describe("Unloading user agent ", *job.label), job));
    }
    return commands;
}

CommandList uninstallCommandsUnloadKexts() {
    CommandList commands;
    for (const NorvikCommon::KextInfo& kext : ComponentLists::allKexts()) {
        commands.push_back(
            std::make_unique<UnloadKextCommand>(describe("Unloading KEXT ", *kext.bundle->name), kext));
    }
    return commands;
}

CommandList uninstallCommandsKillApps() {
    CommandList commands;
    for (const NorvikCommon::ApplicationInfo& app : ComponentLists::applications()) {
        const std::string& process = *app.executable->name;
        commands.push_back(
            std::make_unique<KillProcessCommand>(describe("Closing user application ", process), process));
    }
    return commands;
}

std::unique_ptr<Command> removal(std::string_view prefix, std::string_view name, const Base::URL& item) {
    return std::make_unique<RemoveCommand>(describe(prefix, name), item);
}

void appendAgentAndDaemonDeletions(CommandList& commands) {
    for (const NorvikCommon::BundleDaemonInfo& agent : ComponentLists::legacyAgents()) {
        commands.push_back(
            removal("Deleting user agent ", *agent.app->executable->name, *agent.app->bundle->location));
    }
    for (const NorvikCommon::BundleDaemonInfo& daemon : ComponentLists::legacyBundleDaemons()) {
        commands.push_back(
            removal("Deleting daemon ", *daemon.app->executable->name, *daemon.app->bundle->location));
    }
    for (const NorvikCommon::DaemonInfo& daemon : ComponentLists::legacyDaemons()) {
        commands.push_back(
            removal("Deleting daemon ", *daemon.executable->name, *daemon.executable->location));
    }
}

void appendPlistDeletions(CommandList& commands, const std::vector<NorvikCommon::LaunchdInfo>& jobs) {
    for (const NorvikCommon::LaunchdInfo& job : jobs) {
        commands.push_back(removal("Deleting launchd job ", *job.label, *job.plistLocation()));
    }
}

CommandList uninstallCommandsDeleteFiles() {
    CommandList commands;
    for (const NorvikCommon::ApplicationInfo& app : ComponentLists::applications()) {
        commands.push_back(removal("Deleting user application ", *app.bundle->name, *app.bundle->location));
    }
    for (const Base::URL& workflow : ComponentLists::workflows()) {
        commands.push_back(removal("Deleting resource ", workflow.lastPathComponent(), workflow));
    }
    for (const NorvikCommon::KextInfo& kext : ComponentLists::legacyKexts()) {
        commands.push_back(removal("Deleting KEXT ", *kext.bundle->name, *kext.bundle->location));
    }
    appendAgentAndDaemonDeletions(commands);
    appendPlistDeletions(commands, ComponentLists::agentJobs());
    appendPlistDeletions(commands, ComponentLists::daemonJobs());
    return commands;
}

CommandList cleanupCommandsDeleteFolders() {
    // The maker's whole data folder and application folders are deleted unconditionally, not only if they are
    // empty.
    std::vector<Base::URL> folders{ComponentPathProvider::productAppSupport(),
                                   NorvikCommon::FeaturePathProvider::preferencesFolder(),
                                   ComponentPathProvider::allNorvikProductsAppSupport()};
    for (const std::vector<Base::URL>* more :
         {&ComponentPathProvider::legacyInstallationPaths(), &ComponentPathProvider::legacyProductsPaths()}) {
        folders.insert(folders.end(), more->begin(), more->end());
    }
    CommandList commands;
    commands.push_back(std::make_unique<RemoveCommand>("Deleting support files and directories...", folders));
    return commands;
}

CommandList cleanupCommandsDeleteHelperTools() {
    // The tools' jobs are not stopped: one of them is executing these very commands.
    std::vector<Base::URL> files;
    for (const NorvikCommon::DaemonInfo& tool : ComponentPathProvider::auxiliaryHelperTools()) {
        files.push_back(*tool.executable->location);
    }
    for (const NorvikCommon::DaemonInfo& tool : ComponentPathProvider::auxiliaryHelperTools()) {
        files.push_back(*tool.launchd->plistLocation());
    }
    CommandList commands;
    commands.push_back(std::make_unique<RemoveCommand>("Deleting auxiliary helper tools...", files));
    return commands;
}

}  // namespace

CommandList CommandSuitsProvider::makeUninstallCommands() {
    CommandList commands = uninstallCommandsUnloadLaunchdJobAgentsAndDaemons();
    append(commands, uninstallCommandsUnloadKexts());
    append(commands, uninstallCommandsKillApps());
    append(commands, uninstallCommandsDeleteFiles());
    return commands;
}

CommandList CommandSuitsProvider::makeCleanupCommands() {
    CommandList commands = cleanupCommandsDeleteFolders();
    append(commands, cleanupCommandsDeleteHelperTools());
    return commands;
}

}  // namespace InstallCommon
