#pragma once

#include <string_view>
#include <vector>

#include "Base/URL.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace NorvikCommon {

/// Locations of the product's components: the current version's here, the earlier versions' in the members
/// whose names begin with "legacy" (InstallCommon/LegacyComponents.cpp). Records are made anew on every call;
/// the fixed lists are made once per process, safely against concurrent first use, and shared. Nothing is
/// logged.
struct ComponentPathProvider {
    ComponentPathProvider() = delete;

    static constexpr std::string_view productName = "Sentrel";

    /// /Library/Application Support/NORVIK
    [[nodiscard]] static Base::URL allNorvikProductsAppSupport();
    /// /Library/Application Support/NORVIK/SNT: the product's data folder.
    [[nodiscard]] static Base::URL productAppSupport();
    /// The Finder service.
    [[nodiscard]] static Base::URL workflow();
    /// /Applications/Sentrel.app, which contains all other components of this version.
    [[nodiscard]] static ApplicationInfo managementConsole();
    [[nodiscard]] static ApplicationInfo diagnostics();
    [[nodiscard]] static ApplicationInfo viewLogs();
    [[nodiscard]] static ApplicationInfo scanner();
    [[nodiscard]] static ApplicationInfo uninstaller();
    [[nodiscard]] static BundleDaemonInfo fileAccessDaemon();
    [[nodiscard]] static BundleDaemonInfo containmentDaemon();
    [[nodiscard]] static BundleDaemonInfo userAgent();
    [[nodiscard]] static BundleDaemonInfo trayMenu();
    /// Lies inside the file access daemon's bundle, not in /Library/Extensions.
    [[nodiscard]] static KextInfo fileAccessFilterKext();

    // Fixed lists of the earlier versions.

    /// Folders that held a whole earlier installation.
    [[nodiscard]] static const std::vector<Base::URL>& legacyInstallationPaths();
    /// Folders of the maker's earlier products.
    [[nodiscard]] static const std::vector<Base::URL>& legacyProductsPaths();
    [[nodiscard]] static const std::vector<Base::URL>& legacyWorkflowPaths();
    [[nodiscard]] static const std::vector<KextInfo>& legacyVersionsFileAccessFilterKexts();
    /// Plain executables.
    [[nodiscard]] static const std::vector<DaemonInfo>& legacyVersionsDaemons();
    /// Bundles; they carry the labels of the current daemons.
    [[nodiscard]] static const std::vector<BundleDaemonInfo>& legacyVersionsBundleDaemons();

    // Lists that are computed on every call.

    /// Two agents for each of the legacy installation paths.
    [[nodiscard]] static std::vector<BundleDaemonInfo> legacyVersionsUserAgents();
    [[nodiscard]] static std::vector<ApplicationInfo> legacyVersionsGuiApps();
    /// The privileged helper tools that the product's applications bless, in no particular order.
    [[nodiscard]] static std::vector<DaemonInfo> auxiliaryHelperTools();
};

}  // namespace NorvikCommon
