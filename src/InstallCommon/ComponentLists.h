#pragma once

#include <vector>

#include "Base/URL.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace InstallCommon {

/// The component lists behind the uninstall suites: the current version's and the earlier versions'
/// together. Each is made once per process, at its first use, and shared. Labels repeat; no list is
/// deduplicated.
struct ComponentLists {
    ComponentLists() = delete;

    /// Current daemons, earlier plain daemons, earlier bundle daemons.
    [[nodiscard]] static const std::vector<NorvikCommon::LaunchdInfo>& daemonJobs();
    /// Current agents, earlier agents.
    [[nodiscard]] static const std::vector<NorvikCommon::LaunchdInfo>& agentJobs();
    /// The earlier one in the system's folder, then the current one.
    [[nodiscard]] static const std::vector<NorvikCommon::KextInfo>& allKexts();
    [[nodiscard]] static const std::vector<NorvikCommon::KextInfo>& legacyKexts();
    /// The console, then the earlier versions' applications.
    [[nodiscard]] static const std::vector<NorvikCommon::ApplicationInfo>& applications();
    [[nodiscard]] static const std::vector<Base::URL>& workflows();
    [[nodiscard]] static const std::vector<NorvikCommon::BundleDaemonInfo>& legacyAgents();
    [[nodiscard]] static const std::vector<NorvikCommon::BundleDaemonInfo>& legacyBundleDaemons();
    [[nodiscard]] static const std::vector<NorvikCommon::DaemonInfo>& legacyDaemons();
};

}  // namespace InstallCommon
