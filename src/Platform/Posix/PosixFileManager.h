#pragma once

#include "Platform/FileManager.h"
#include "Platform/Posix/Descriptor.h"

namespace Platform::Posix {

/// The file operations that POSIX says alike for both systems; copying and the system's folders are each
/// system's own.
///
/// removeItem refuses the root folder (EBUSY) and a last component "." or ".." (EINVAL) before it touches
/// anything; what it does at mount points is in TreeRemoval.h. No state: calls from several threads do not
/// meet.
class PosixFileManager : public FileManager {
  public:
    [[nodiscard]] std::optional<Error> createDirectory(const Base::URL& directory,
                                                       bool withIntermediates) override;
    [[nodiscard]] std::optional<bool> hasVisibleEntries(const Base::URL& directory, Error& error) override;
    [[nodiscard]] std::optional<Error> removeItem(const Base::URL& item) override;
    [[nodiscard]] bool itemExists(const Base::URL& item) override;
    [[nodiscard]] std::optional<FileIdentity> identity(const Base::URL& item) override;
    [[nodiscard]] int setMode(const Base::URL& item, std::uint16_t mode) override;
    [[nodiscard]] int setOwner(const Base::URL& item, std::uint32_t owner, std::uint32_t group) override;
    void setOwnerOfContents(const Base::URL& directory, std::uint32_t owner, std::uint32_t group,
                            const std::function<void(const Base::URL& item, int error)>& failed) override;
};

/// An item as its parent folder, opened, and its name there.
struct OpenedParent {
    Descriptor folder;
    std::string name;
};

/// Opens the folder that `item` lies in. Returns 0 or an errno value: EBUSY for the root folder, EINVAL for
/// an item whose last component is "." or "..".
[[nodiscard]] int openParent(const Base::URL& item, OpenedParent& parent);

}  // namespace Platform::Posix
