#pragma once

#include "Platform/Posix/PosixFileManager.h"

namespace Platform::Darwin {

/// Copying by NSFileManager, and the folders that it knows by purpose; everything else as POSIX has it.
///
/// copyItem makes sure of what Foundation does not promise: a dangling link at the destination is EEXIST, a
/// folder is not copied into itself (EINVAL), and the error names the entry that failed. A path that is not
/// valid UTF-8 is refused with EILSEQ, as the file systems of a Mac do.
class DarwinFileManager final : public Posix::PosixFileManager {
  public:
    [[nodiscard]] std::optional<Error> copyItem(const Base::URL& source,
                                                const Base::URL& destination) override;
    [[nodiscard]] Base::URL localDirectory(SearchPathDirectory directory) override;
};

}  // namespace Platform::Darwin
