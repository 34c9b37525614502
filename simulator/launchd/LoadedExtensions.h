#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "Support/Faults.h"
#include "launchd/Caller.h"

namespace Simulator {

inline constexpr std::int32_t kKextNotPrivileged = static_cast<std::int32_t>(0xdc008004);
inline constexpr std::int32_t kKextNotFound = static_cast<std::int32_t>(0xdc008006);
inline constexpr std::int32_t kKextInUse = static_cast<std::int32_t>(0xdc008018);

/// The kernel's extensions: those whose bundles existed at boot.
class LoadedExtensions {
  public:
    explicit LoadedExtensions(const Faults& faults) : faults_(faults) {}

    /// Loads every *.kext in `folder` that has a bundle identifier.
    void loadFrom(const std::string& folder);
    /// Returns the kernel return code; 0 if it was loaded and no longer is.
    std::int32_t unload(const Caller& caller, const std::string& identifier);
    [[nodiscard]] const std::set<std::string>& identifiers() const { return identifiers_; }

  private:
    const Faults& faults_;
    std::set<std::string> identifiers_;
};

}  // namespace Simulator
