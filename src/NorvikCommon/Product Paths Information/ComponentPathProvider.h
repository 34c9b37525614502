#pragma once

#include <string_view>

#include "Base/URL.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace NorvikCommon {

/// Locations of the current version's components. Records are made anew on every call; nothing is logged. The
/// install module's ComponentPathProvider adds the earlier versions'.
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
};

}  // namespace NorvikCommon
