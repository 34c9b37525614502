#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "Platform/Posix/FolderListing.h"

namespace Platform::Posix {

/// The head of an entry in an EntryBuffer; the entry's name follows right behind `type`, with its terminating
/// NUL. It is the form in which Linux lists a folder, struct linux_dirent64.
struct EntryRecord {
    std::uint64_t inode;
    std::int64_t position;
    /// The length of the whole record, a multiple of the record's alignment.
    std::uint16_t length;
    unsigned char type;
};
constexpr std::size_t kEntryNameOffset = offsetof(EntryRecord, type) + 1;

/// The entries of a folder that a FolderListing has read ahead: the part that its forms for the different
/// systems share. Not zeroed when it is made.
class EntryBuffer {
  public:
    static constexpr std::size_t kSize = 32768;

    EntryBuffer() {}

    /// Space for records, and the number of bytes of them so far.
    [[nodiscard]] char* room() { return bytes_.data(); }
    void filled(std::size_t size) {
        position_ = 0;
        end_ = size;
    }

    /// Takes the next entry out, never "." or "..". False if none is left.
    [[nodiscard]] bool take(FolderEntry& entry) { return next(position_, entry); }
    /// Whether at least `count` entries are left.
    [[nodiscard]] bool holds(std::size_t count) const;
    /// Whether an entry is left that may be a folder.
    [[nodiscard]] bool holdsFolder() const;
    /// Moves the first half of the remaining entries to `other`.
    void moveFirstHalf(EntryBuffer& other);

  private:
    [[nodiscard]] bool next(std::size_t& position, FolderEntry& entry) const;

    std::size_t position_ = 0;
    std::size_t end_ = 0;
    alignas(EntryRecord) std::array<char, kSize> bytes_;
};

}  // namespace Platform::Posix
