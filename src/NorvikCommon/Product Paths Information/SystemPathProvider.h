#pragma once

#include "Base/URL.h"

namespace NorvikCommon {

/// Fixed locations of the system. Each call computes a fresh value; nothing is logged.
struct SystemPathProvider {
    SystemPathProvider() = delete;

    /// /Library/LaunchDaemons
    [[nodiscard]] static Base::URL daemonsPlists();
    /// /Library/LaunchAgents
    [[nodiscard]] static Base::URL userAgentsPlists();
    /// /Library/Extensions
    [[nodiscard]] static Base::URL extensions();
    /// /Library/PrivilegedHelperTools: where launchd puts the tools that it blesses.
    [[nodiscard]] static Base::URL privilegedHelperTools();
    /// The Launch Services registration tool, despite the name.
    [[nodiscard]] static Base::URL lsRegisterDatabase();
    /// /bin/launchctl
    [[nodiscard]] static Base::URL launchctlExecutable();
    /// The system's application folder in the local domain, created if missing: /Applications.
    [[nodiscard]] static Base::URL localApplications();
    /// The system's support folder in the local domain, created if missing: /Library/Application
    /// Support.
    [[nodiscard]] static Base::URL localApplicationSupport();
};

}  // namespace NorvikCommon
