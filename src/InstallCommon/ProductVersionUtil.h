#pragma once

#include <compare>
#include <optional>
#include <string_view>

#include "Platform/Bundles.h"

namespace InstallCommon {

/// Comparison of application bundles by version.
struct ProductVersionUtil {
    ProductVersionUtil() = delete;

    static constexpr std::string_view kCFBundleShortVersionStringKey = "CFBundleShortVersionString";
    static constexpr std::string_view kCFBundleVersionKey = "CFBundleVersion";

    /// Compares the versions, each the short version followed by "." and the build unless both are the same
    /// text. Less: `installedBundle` is the older one. Returns nothing if either bundle lacks one of its two
    /// versions. Logs nothing.
    [[nodiscard]] static std::optional<std::strong_ordering> compareVersions(
        const Platform::Bundle& installedBundle, const Platform::Bundle& newBundle);
};

/// Compares two texts with numeric search only (NSNumericSearch): where both have a run of digits, the runs
/// compare by value (of any length, ignoring leading zeros), everything else compares character by character,
/// case included; if one text is a prefix of the other, the shorter is less.
[[nodiscard]] std::strong_ordering compareNumerically(std::string_view a, std::string_view b);

}  // namespace InstallCommon
