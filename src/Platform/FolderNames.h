#pragma once

#include "Platform/StandardFolders.h"
#include "Platform/SystemPorts.h"

namespace Platform {

/// The standard folders as every Mac names them: /Applications, /Library/Application Support, /Users. Never
/// looks at the disk, so nothing is created.
class FolderNames final : public StandardFolders {
  public:
    [[nodiscard]] Base::URL folder(StandardFolder purpose) override;
};

/// Ports for a program that only looks up the catalogue: the folders' names and no other service.
[[nodiscard]] const SystemPorts& folderNamesOnly();

}  // namespace Platform
