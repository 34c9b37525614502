#include "InstallCommon/CommandLists.h"

#include <utility>

#include "InstallCommon/CommandListBuilding.h"
#include "InstallCommon/CommandSuitsProvider.h"

namespace InstallCommon {

namespace {

void appendInstallation(CommandList& list, const PayloadLocations& payload) {
    append(list, CommandSuitsProvider::makeInstallCommands(payload.applications, payload.launchdJobs,
                                                           payload.supportFiles));
    append(list, CommandSuitsProvider::makePostInstallCommands());
}

}  // namespace

PayloadLocations PayloadLocations::inDirectory(const Base::URL& sourceDirectory,
                                               std::string_view applicationsSubdir,
                                               std::string_view launchdJobsSubdir,
                                               std::string_view supportFilesSubdir) {
    return {sourceDirectory.appendingPathComponent(applicationsSubdir),
            sourceDirectory.appendingPathComponent(launchdJobsSubdir),
            sourceDirectory.appendingPathComponent(supportFilesSubdir)};
}

CommandList CommandLists::uninstallation() {
    CommandList list = CommandSuitsProvider::makeUninstallCommands();
    append(list, CommandSuitsProvider::makeCleanupCommands());
    return list;
}

CommandList CommandLists::cleanInstallation(const PayloadLocations& payload) {
    CommandList list = CommandSuitsProvider::makePreInstallCommands(payload.supportFiles);
    appendInstallation(list, payload);
    return list;
}

CommandList CommandLists::update(const PayloadLocations& payload) {
    CommandList list = CommandSuitsProvider::makeUninstallCommands();
    appendInstallation(list, payload);
    return list;
}

CommandList CommandLists::overInstallation(const PayloadLocations& payload) {
    CommandList list = uninstallation();
    append(list, CommandSuitsProvider::makePreInstallCommands(payload.supportFiles));
    appendInstallation(list, payload);
    return list;
}

}  // namespace InstallCommon
