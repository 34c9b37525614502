#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <memory>

namespace Platform::Posix {

/// Copies single items between open folders, with their attributes; each system has its own source file for
/// it. All operations return 0 or an errno value, EEXIST if `newName` is taken, even by a dangling link.
/// One object serves one copy on one thread at a time: it remembers what the file systems involved cannot
/// do.
class FileCopy {
  public:
    FileCopy();
    FileCopy(const FileCopy&) = delete;
    FileCopy& operator=(const FileCopy&) = delete;
    ~FileCopy();

    /// A plain file. ENOTSUP if the entry is not one (any more).
    [[nodiscard]] int copyFile(int from, const char* name, int to, const char* newName);
    /// A link, as itself; `status` is its own.
    [[nodiscard]] int copyLink(int from, const char* name, const struct stat& status, int to,
                               const char* newName);
    /// A FIFO, a socket's name or a device; ENOTSUP where the system cannot make them relative to a folder.
    [[nodiscard]] int copySpecial(int from, const char* name, const struct stat& status, int to,
                                  const char* newName);
    /// Gives an open copy the owner, extended attributes, mode and times of its source.
    [[nodiscard]] int copyAttributes(int source, const struct stat& sourceStatus, int copy);

  private:
    /// Makes a link with the target of `name`; its attributes are still the new item's own.
    [[nodiscard]] static int copyTarget(int from, const char* name, int to, const char* newName);
    [[nodiscard]] int copyContents(int source, const struct stat& status, int copy);
    [[nodiscard]] int copyRange(int source, int copy, off_t begin, off_t end);
    [[nodiscard]] int copyThroughBuffer(int source, int copy, off_t begin, off_t end);

    static constexpr std::size_t kBufferSize = std::size_t{1} << 17;

    const uid_t user_;
    const gid_t group_;
    std::unique_ptr<char[]> buffer_;
    bool tryClone_ = true;
    bool tryCopyRange_ = true;
};

}  // namespace Platform::Posix
