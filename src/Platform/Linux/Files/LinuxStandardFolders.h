#pragma once

#include <string>
#include <utility>

#include "Platform/FolderNames.h"
#include "Platform/Posix/PosixFileManager.h"

namespace Platform::Linux {

/// The Mac's folders on Linux.
class LinuxStandardFolders final : public StandardFolders {
  public:
    LinuxStandardFolders() = default;
    /// With the folders below `localDomain` (an absolute path) instead of the root folder.
    explicit LinuxStandardFolders(std::string localDomain) : localDomain_(std::move(localDomain)) {}

    [[nodiscard]] Base::URL folder(StandardFolder purpose) override;

  private:
    std::string localDomain_;
    FolderNames names_;
    Posix::PosixFileManager files_;
};

}  // namespace Platform::Linux
