#include <string>
#include <string_view>

#include "InstallCommon/CommandListBuilding.h"
#include "InstallCommon/CommandSuitsProvider.h"
#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/ComponentPathProvider+Legacy.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"

namespace InstallCommon {

namespace {

using NorvikCommon::FeaturePathProvider;

/// Copies the item of this name from a payload folder.
std::unique_ptr<Command> copy(std::string commandDescription, const Base::URL& folder, std::string_view name,
                              const Base::URL& destination) {
    return std::make_unique<CopyCommand>(std::move(commandDescription), folder.appendingPathComponent(name),
                                         destination);
}

std::unique_ptr<Command> jobCopy(const Base::URL& folder, const NorvikCommon::LaunchdInfo& job) {
    return copy(describe("Adding launchd job ", *job.label), folder, *job.plist->name, *job.plistLocation());
}

CommandList makeInstallCommandsCopyFiles(const Base::URL& applicationsLocation,
                                         const Base::URL& launchdJobsLocation,
                                         const Base::URL& supportFilesLocation) {
    CommandList commands;
    const NorvikCommon::BundleInfo console = *ComponentPathProvider::managementConsole().bundle;
    commands.push_back(copy(describe("Installing user application ", *console.name), applicationsLocation,
                            *console.name, *console.location));
    for (const NorvikCommon::BundleDaemonInfo& component :
         {ComponentPathProvider::containmentDaemon(), ComponentPathProvider::fileAccessDaemon(),
          ComponentPathProvider::trayMenu(), ComponentPathProvider::userAgent()}) {
        commands.push_back(jobCopy(launchdJobsLocation, *component.launchd));
    }
    const Base::URL workflow = ComponentPathProvider::workflow();
    const std::string workflowName = workflow.lastPathComponent();
    commands.push_back(
        copy(describe("Installing resource ", workflowName), supportFilesLocation, workflowName, workflow));
    return commands;
}

/// Agents before daemons.
void appendStarts(CommandList& commands) {
    for (const NorvikCommon::BundleDaemonInfo& agent :
         {ComponentPathProvider::trayMenu(), ComponentPathProvider::userAgent()}) {
        commands.push_back(StartLaunchdJobCommand::withAgent(
            describe("Starting user agent ", *agent.launchd->label), *agent.launchd));
    }
    for (const NorvikCommon::BundleDaemonInfo& daemon :
         {ComponentPathProvider::containmentDaemon(), ComponentPathProvider::fileAccessDaemon()}) {
        commands.push_back(StartLaunchdJobCommand::withDaemon(
            describe("Starting daemon ", *daemon.launchd->label), *daemon.launchd));
    }
}

}  // namespace

CommandList CommandSuitsProvider::makePreInstallCommands(const Base::URL& supportFilesLocation) {
    const NorvikCommon::FilesystemItemInfo settings = FeaturePathProvider::settingsPlist();
    const NorvikCommon::FilesystemItemInfo bases = FeaturePathProvider::avBases();
    CommandList commands;
    commands.push_back(
        copy("Installing settings...", supportFilesLocation, *settings.name, *settings.location));
    commands.push_back(copy("Installing AV bases...", supportFilesLocation, *bases.name, *bases.location));
    return commands;
}

CommandList CommandSuitsProvider::makeInstallCommands(const Base::URL& applicationsLocation,
                                                      const Base::URL& launchdJobsLocation,
                                                      const Base::URL& supportFilesLocation) {
    CommandList commands =
        makeInstallCommandsCopyFiles(applicationsLocation, launchdJobsLocation, supportFilesLocation);
    appendStarts(commands);
    return commands;
}

CommandList CommandSuitsProvider::makePostInstallCommands() {
    CommandList commands;
    commands.push_back(std::make_unique<UpdateLaunchServices>("Updating system databases..."));
    return commands;
}

}  // namespace InstallCommon
