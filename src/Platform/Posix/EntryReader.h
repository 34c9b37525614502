#pragma once

#include <dirent.h>
#include <sys/types.h>

#include <cstddef>

namespace Platform::Posix {

/// Reads a folder's entries in batches, as records of EntryBuffer.h: the one part of FolderListing in which
/// the systems differ. Each has its own source file for it.
class EntryReader {
  public:
    EntryReader() = default;
    EntryReader(const EntryReader&) = delete;
    EntryReader& operator=(const EntryReader&) = delete;
    ~EntryReader() { stop(); }

    /// Starts before the first entry of `folder`, which has to stay open. Returns 0 or an errno value.
    [[nodiscard]] int start(int folder);
    void stop();
    /// Goes on from the same place through a duplicate of the descriptor that start() was given.
    void continueThrough(int duplicate);

    /// Returns the number of bytes of `room` that were filled, 0 at the end, -1 on failure (see errno).
    [[nodiscard]] ssize_t read(char* room, std::size_t size) const;

  private:
    /// Used by getdents64(2).
    [[maybe_unused]] int folder_ = -1;
    /// Used by readdir(3).
    [[maybe_unused]] DIR* stream_ = nullptr;
};

}  // namespace Platform::Posix
