#pragma once

#include <string>

#include "Platform/Posix/PosixFileManager.h"

namespace Platform::Linux {

/// Copying and the Mac's folders on Linux. What copyItem does with items of other kinds is in TreeCopy.h.
class LinuxFileManager final : public Posix::PosixFileManager {
  public:
    LinuxFileManager() = default;
    /// With the local domain's folders below `localDomain` (an absolute path) instead of the root folder.
    explicit LinuxFileManager(std::string localDomain) : localDomain_(std::move(localDomain)) {}

    [[nodiscard]] std::optional<Error> copyItem(const Base::URL& source,
                                                const Base::URL& destination) override;
    [[nodiscard]] Base::URL localDirectory(SearchPathDirectory directory) override;

  private:
    std::string localDomain_;
};

}  // namespace Platform::Linux
