#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "Base/URL.h"
#include "Platform/Error.h"

namespace Helpers {

/// Identifies the maker's package; stated when the helper is built.
struct PackageFingerprint {
    /// In bytes. A package of any other length is not read to the end.
    std::uint64_t size = 0;
    /// In 64 lower-case hexadecimal digits.
    std::string_view sha256;
};

/// Installs a flat package on the running system with the system's installer tool and waits for it. Returns
/// the error, in the tool's own words if it has any; nothing on success. Logs nothing.
///
/// The package may lie where anybody can write. It is copied to a folder that only root can reach, the copy
/// is compared with the fingerprint, and the tool installs the copy; it is removed in every outcome. A
/// package that is not the maker's is an error, and the tool is not started. Concurrent installations wait
/// for each other.
[[nodiscard]] std::optional<Platform::Error> installPackage(const Base::URL& package,
                                                            const PackageFingerprint& maker);

/// Removes the copy that a killed helper's installation left behind; an installation that is under way keeps
/// its own. Every installation does this first. Returns the error. Logs nothing.
[[nodiscard]] std::optional<Platform::Error> removeLeftPackage();

}  // namespace Helpers
