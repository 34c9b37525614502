#pragma once

#include <string_view>

namespace InstallCommon {

/// The privileged helper that executes command lists.
struct InstallHelper {
    InstallHelper() = delete;

    /// Its mach service and its launchd label.
    static constexpr std::string_view machServiceName = "com.norvik.InstallerHelper";
};

}  // namespace InstallCommon
