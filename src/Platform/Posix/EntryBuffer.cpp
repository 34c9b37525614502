#include "Platform/Posix/EntryBuffer.h"

#include <cstring>

namespace Platform::Posix {

namespace {

bool isSelfOrParent(const char* name) {
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

EntryRecord recordAt(const char* start) {
    EntryRecord record;
    std::memcpy(&record, start, kEntryNameOffset);
    return record;
}

}  // namespace

bool EntryBuffer::next(std::size_t& position, FolderEntry& entry) const {
    while (position < end_) {
        const char* start = bytes_.data() + position;
        const EntryRecord record = recordAt(start);
        const char* name = start + kEntryNameOffset;
        position += record.length;
        if (!isSelfOrParent(name)) {
            entry = FolderEntry{name, record.type, static_cast<ino_t>(record.inode)};
            return true;
        }
    }
    return false;
}

bool EntryBuffer::holds(std::size_t count) const {
    FolderEntry entry;
    std::size_t position = position_;
    while (count > 0 && next(position, entry)) {
        --count;
    }
    return count == 0;
}

bool EntryBuffer::holdsFolder() const {
    FolderEntry entry;
    std::size_t position = position_;
    while (next(position, entry)) {
        if (entry.type == DT_DIR || entry.type == DT_UNKNOWN) {
            return true;
        }
    }
    return false;
}

void EntryBuffer::moveFirstHalf(EntryBuffer& other) {
    const std::size_t middle = position_ + (end_ - position_) / 2;
    std::size_t split = position_;
    while (split < middle) {
        split += recordAt(bytes_.data() + split).length;
    }
    std::memcpy(other.room(), bytes_.data() + position_, split - position_);
    other.filled(split - position_);
    position_ = split;
}

}  // namespace Platform::Posix
