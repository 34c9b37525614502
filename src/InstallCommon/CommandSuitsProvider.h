#pragma once

#include "Base/URL.h"
#include "InstallCommon/Command.h"

namespace InstallCommon {

/// Turns the component catalogue into the ordered lists of commands that the helper executes. The order is
/// the design: jobs are stopped before the files they run from are deleted, kernel extensions unloaded before
/// anything is deleted, applications closed before their bundles go, launchd property lists go last. Nothing
/// here looks at the disk: a command for a component that is not installed is emitted anyway. Commands are
/// new on every call; the component lists behind them are made once per process. Nothing is logged.
struct CommandSuitsProvider {
    CommandSuitsProvider() = delete;

    /// 73 commands: stop 6 daemon jobs and 10 agent jobs, unload 2 kernel extensions, close 12 applications,
    /// delete 43 items.
    [[nodiscard]] static CommandList makeUninstallCommands();

    /// 2 commands: delete the data folders, then the privileged helper tools, one of which is executing these
    /// very commands.
    [[nodiscard]] static CommandList makeCleanupCommands();

    // The install side knows the current version only. Each source is a folder of the unpacked payload plus
    // the file name of the installed item.

    /// 2 commands: copy the data files that must be there before anything starts, settings first.
    [[nodiscard]] static CommandList makePreInstallCommands(const Base::URL& supportFilesLocation);

    /// 10 commands: copy the console (which carries all other components), the four launchd property lists
    /// and the Finder service; then start the two agents and the two daemons.
    [[nodiscard]] static CommandList makeInstallCommands(const Base::URL& applicationsLocation,
                                                         const Base::URL& launchdJobsLocation,
                                                         const Base::URL& supportFilesLocation);

    /// 1 command: refresh the Launch Services database.
    [[nodiscard]] static CommandList makePostInstallCommands();
};

}  // namespace InstallCommon
