#pragma once

#include <string>

#include "Platform/Posix/PosixFileManager.h"

namespace Platform::Linux {

/// The Mac's folders on Linux; everything else as POSIX has it.
class LinuxFileManager final : public Posix::PosixFileManager {
  public:
    LinuxFileManager() = default;
    /// With the local domain's folders below `localDomain` (an absolute path) instead of the root folder.
    explicit LinuxFileManager(std::string localDomain) : localDomain_(std::move(localDomain)) {}

    [[nodiscard]] Base::URL localDirectory(SearchPathDirectory directory) override;

  private:
    std::string localDomain_;
};

}  // namespace Platform::Linux
