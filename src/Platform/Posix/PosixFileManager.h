#pragma once

#include "Platform/FileManager.h"

namespace Platform::Posix {

/// The file operations, which POSIX defines alike for both systems. Copying too: Foundation copies by paths,
/// and somebody may change what they lead to meanwhile.
///
/// TreeRemoval.h says how removeItem treats mount points, TreeCopy.h how copyItem treats items of other
/// kinds. No state but the position in the password database, which SystemFolders.h moves: one call at a time
/// for removal and for the change of modes and owners.
class PosixFileManager final : public FileManager {
  public:
    [[nodiscard]] std::optional<Error> createDirectory(const Base::URL& directory,
                                                       bool withIntermediates) override;
    [[nodiscard]] std::optional<bool> hasVisibleEntries(const Base::URL& directory, Error& error) override;
    [[nodiscard]] std::optional<Error> removeItem(const Base::URL& item) override;
    [[nodiscard]] std::optional<Error> copyItem(const Base::URL& source,
                                                const Base::URL& destination) override;
    [[nodiscard]] bool itemExists(const Base::URL& item) override;
    [[nodiscard]] std::optional<FileIdentity> identity(const Base::URL& item) override;
    [[nodiscard]] int setMode(const Base::URL& item, std::uint16_t mode) override;
    [[nodiscard]] int setOwner(const Base::URL& item, std::uint32_t owner, std::uint32_t group) override;
    void setOwnerOfContents(const Base::URL& directory, std::uint32_t owner, std::uint32_t group,
                            const std::function<void(const Base::URL& item, int error)>& failed) override;
};

}  // namespace Platform::Posix
