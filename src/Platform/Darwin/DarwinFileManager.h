#pragma once

#include "Platform/Posix/PosixFileManager.h"

namespace Platform::Darwin {

/// The folders that NSFileManager knows by purpose; everything else as POSIX has it. Copying too: Foundation
/// copies by paths, and somebody may change what they lead to meanwhile.
class DarwinFileManager final : public Posix::PosixFileManager {
  public:
    [[nodiscard]] Base::URL localDirectory(SearchPathDirectory directory) override;
};

}  // namespace Platform::Darwin
