#pragma once

#include <dirent.h>
#include <sys/types.h>

#include <cstddef>
#include <memory>

namespace Platform::Posix {

/// One entry of a folder, never "." or "..".
struct FolderEntry {
    /// Valid until the listing is asked for its next entry.
    const char* name = nullptr;
    /// DT_UNKNOWN where the file system does not tell.
    unsigned char type = DT_UNKNOWN;
    /// As the listing states it; at a mount point and on layered file systems it may differ from st_ino.
    ino_t inode = 0;
};

/// Reads the entries of one open folder in batches, in the file system's own order, in constant memory.
/// Reading continues correctly while entries already returned are removed. One object can read one folder
/// after another and keeps its buffer. Each system has its own source file for it.
class FolderListing {
  public:
    FolderListing();
    FolderListing(FolderListing&& other) noexcept;
    FolderListing& operator=(FolderListing&& other) noexcept;
    ~FolderListing();

    /// Positions itself before the first entry of `folder`, which stays the caller's and has to stay open.
    void start(int folder);

    /// Moves on to the next entry. Returns 1 and sets `entry`, 0 at the end, -1 on failure (see errno), after
    /// which it is at the end.
    int next(FolderEntry& entry);

    /// Whether at least `count` entries, or an entry that may be a folder, are left of the current batch.
    /// Reads the next batch if nothing is left of the last one.
    [[nodiscard]] bool holds(std::size_t count);
    [[nodiscard]] bool holdsFolder();

    /// Takes out the first half of the entries read ahead, as a listing that ends there.
    [[nodiscard]] FolderListing takeFirstHalf();
    /// Goes on from the same place through a duplicate of the descriptor that start() was given.
    void continueThrough(int duplicate);

  private:
    struct State;
    bool hasRead();
    std::unique_ptr<State> state_;
};

}  // namespace Platform::Posix
