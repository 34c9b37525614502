#pragma once

#include <string_view>

#include "Base/URL.h"
#include "InstallCommon/Command.h"

namespace InstallCommon {

/// Where the three parts of an unpacked payload lie.
struct PayloadLocations {
    Base::URL applications;
    Base::URL launchdJobs;
    Base::URL supportFiles;

    /// One component each, below the payload's folder.
    [[nodiscard]] static PayloadLocations inDirectory(const Base::URL& sourceDirectory,
                                                      std::string_view applicationsSubdir,
                                                      std::string_view launchdJobsSubdir,
                                                      std::string_view supportFilesSubdir);
};

/// The whole lists as they are sent, put together from CommandSuitsProvider's pieces.
struct CommandLists {
    CommandLists() = delete;

    /// Uninstall, cleanup: 75 commands.
    [[nodiscard]] static CommandList uninstallation();
    /// Pre-install, install, launch services.
    [[nodiscard]] static CommandList cleanInstallation(const PayloadLocations& payload);
    /// Uninstall, install, launch services: the data stays, so there is no cleanup and no pre-install.
    [[nodiscard]] static CommandList update(const PayloadLocations& payload);
    /// Uninstall, cleanup, pre-install, install, launch services.
    [[nodiscard]] static CommandList overInstallation(const PayloadLocations& payload);
};

}  // namespace InstallCommon
