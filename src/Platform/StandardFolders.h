#pragma once

#include <cstdint>

#include "Base/URL.h"

namespace Platform {

/// Folders that the system knows by purpose, in the local domain (NSLocalDomainMask).
enum class StandardFolder : std::uint8_t {
    applications,        ///< /Applications
    applicationSupport,  ///< /Library/Application Support
    users,               ///< /Users
};

/// Where the system keeps the folders of each kind. Synchronous, from any thread; nothing is logged.
class StandardFolders {
  public:
    virtual ~StandardFolders() = default;

    /// A folder of the local domain, created if missing; returns its URL even if that failed.
    [[nodiscard]] virtual Base::URL folder(StandardFolder purpose) = 0;
};

}  // namespace Platform
