#pragma once

#include "Platform/FolderNames.h"

namespace Platform::Darwin {

/// The folders that NSFileManager knows by purpose.
class DarwinStandardFolders final : public StandardFolders {
  public:
    [[nodiscard]] Base::URL folder(StandardFolder purpose) override;

  private:
    FolderNames names_;
};

}  // namespace Platform::Darwin
