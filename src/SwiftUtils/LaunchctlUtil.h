#pragma once

#include <cstdint>
#include <string>

#include "Base/URL.h"

namespace SwiftUtils {

/// Drives launchd through the system's launchctl tool. Every operation runs the tool once, blocks until it
/// has ended and returns whether it exited with status 0; `execute` logs what the tool printed. User ids
/// select the session ("gui/<uid>").
struct LaunchctlUtil {
    LaunchctlUtil() = delete;

    /// launchctl bootstrap system PLIST
    static bool bootstrapDaemon(const Base::URL& plist);
    /// launchctl bootout system PLIST
    [[nodiscard]] static bool bootoutDaemon(const Base::URL& plist);
    /// launchctl bootstrap gui/UID PLIST
    static bool bootstrapAgent(const Base::URL& plist, std::uint32_t userId);
    /// launchctl bootout gui/UID PLIST
    static bool bootoutAgent(const Base::URL& plist, std::uint32_t userId);
    /// launchctl enable system/LABEL
    static bool enableDaemon(const std::string& label);
    /// launchctl print system/LABEL: whether the service is loaded.
    [[nodiscard]] static bool isDaemonRegistered(const std::string& label);
    /// launchctl enable gui/UID/LABEL
    static bool enableAgent(const std::string& label, std::uint32_t userId);
    /// launchctl print gui/UID/LABEL: whether the service is loaded.
    [[nodiscard]] static bool isAgentRegistered(const std::string& label, std::uint32_t userId);
};

}  // namespace SwiftUtils
