#pragma once

#include <vector>

#include "Base/URL.h"
#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace InstallCommon {

/// The component catalogue with what this module adds: where earlier versions put their components, and the
/// helper tools. The fixed lists are made once per process, safely against concurrent first use, and shared;
/// everything else is made anew on every call. Nothing is logged.
struct ComponentPathProvider : NorvikCommon::ComponentPathProvider {
    // Fixed lists.

    /// Folders that held a whole earlier installation.
    [[nodiscard]] static const std::vector<Base::URL>& legacyInstallationPaths();
    /// Folders of the maker's earlier products.
    [[nodiscard]] static const std::vector<Base::URL>& legacyProductsPaths();
    [[nodiscard]] static const std::vector<Base::URL>& legacyWorkflowPaths();
    [[nodiscard]] static const std::vector<NorvikCommon::KextInfo>& legacyVersionsFileAccessFilterKexts();
    /// Plain executables.
    [[nodiscard]] static const std::vector<NorvikCommon::DaemonInfo>& legacyVersionsDaemons();
    /// Bundles; they carry the labels of the current daemons.
    [[nodiscard]] static const std::vector<NorvikCommon::BundleDaemonInfo>& legacyVersionsBundleDaemons();

    // Computed lists.

    /// Two agents for each of the legacy installation paths.
    [[nodiscard]] static std::vector<NorvikCommon::BundleDaemonInfo> legacyVersionsUserAgents();
    [[nodiscard]] static std::vector<NorvikCommon::ApplicationInfo> legacyVersionsGuiApps();
    /// The privileged helper tools that the product's applications bless, in no particular order.
    [[nodiscard]] static std::vector<NorvikCommon::DaemonInfo> auxiliaryHelperTools();

    // Single entries of the lists, for code that means one of them.

    /// Four installation paths: /Library/Application Support/Norvik/AntiVir, .../Norvik/Antivirus,
    /// .../NORVIK/SNT/FileAccessDaemon, and /Applications/NORVIK/SNT.
    [[nodiscard]] static Base::URL legacyAntiVirFolder();
    [[nodiscard]] static Base::URL legacyAntivirusFolder();
    [[nodiscard]] static Base::URL legacyFileAccessDaemonFolder();
    [[nodiscard]] static Base::URL legacySntApplications();
    /// A products path: /Applications/Norvik.
    [[nodiscard]] static Base::URL legacyNorvikApplications();
    /// The plain daemons of .../Norvik/AntiVirus and of .../NORVIK/SNT.
    [[nodiscard]] static NorvikCommon::DaemonInfo legacyAntivirusDaemon();
    [[nodiscard]] static NorvikCommon::DaemonInfo legacySntDaemon();
};

}  // namespace InstallCommon
