#pragma once

#include <string_view>

#include "Base/URL.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace NorvikCommon {

/// Locations of single features' files, below the product's data folder unless stated otherwise. Each call
/// computes a fresh value; nothing is logged.
struct FeaturePathProvider {
    FeaturePathProvider() = delete;

    [[nodiscard]] static Base::URL quarantineFolder();
    [[nodiscard]] static Base::URL quarantineDatabase();
    [[nodiscard]] static FilesystemItemInfo settingsPlist();
    [[nodiscard]] static FilesystemItemInfo avBases();
    /// Copies of the installed items, each mirrored under its whole path.
    [[nodiscard]] static Base::URL repairFolder();
    // Three features share one database file intentionally.
    [[nodiscard]] static Base::URL flsStorage();
    [[nodiscard]] static Base::URL verdictStorage();
    [[nodiscard]] static Base::URL fileRatingStorage();
    [[nodiscard]] static Base::URL logDirectory();
    static constexpr std::string_view logFileExtension = "log";
    /// /Users/Shared/Norvik, outside the data folder.
    [[nodiscard]] static Base::URL preferencesFolder();
    [[nodiscard]] static Base::URL containmentServiceFolder();
};

}  // namespace NorvikCommon
