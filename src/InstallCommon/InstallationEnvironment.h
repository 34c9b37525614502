#pragma once

#include <cstdint>
#include <optional>

#include "Platform/Bundles.h"

namespace InstallCommon {

/// What is installed, compared with a given version. (Misspelt for good: other programs use the name.)
enum class InstallatedNorvikAntivirusType : std::int64_t {
    notInstalled = 0,
    /// Installed, but its version cannot be compared, or it is older and its console is missing.
    installedNotUpdateable = 1,
    /// An older version with its console.
    installedUpdateable = 2,
    installedSameVersion = 3,
    installedNewerVersion = 4,
};

/// The case with this raw value, nothing for a value outside 0 to 4.
[[nodiscard]] std::optional<InstallatedNorvikAntivirusType> installatedNorvikAntivirusType(
    std::int64_t rawValue);

/// What the owners of a helper client ask about the Mac.
class InstallationEnvironment {
  public:
    virtual ~InstallationEnvironment() = default;

    /// Whether another maker's antivirus product was found.
    [[nodiscard]] virtual bool otherAntivirusInstalled() const = 0;
    /// `relativeToNew` is the bundle of the running program. The installed bundle is read anew on every
    /// call.
    [[nodiscard]] virtual InstallatedNorvikAntivirusType checkNorvikAntivirusInstallType(
        const Platform::Bundle& relativeToNew) const = 0;
};

}  // namespace InstallCommon
