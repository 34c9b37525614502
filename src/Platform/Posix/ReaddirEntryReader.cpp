// Folder entries on systems that offer no better call than readdir(3).
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Platform/Posix/EntryBuffer.h"
#include "Platform/Posix/EntryReader.h"

namespace Platform::Posix {

namespace {

std::size_t lengthOfRecord(std::size_t lengthOfName) {
    constexpr std::size_t kAlignment = alignof(EntryRecord);
    return (kEntryNameOffset + lengthOfName + 1 + kAlignment - 1) / kAlignment * kAlignment;
}

/// Returns how many bytes it took.
std::size_t putRecord(const dirent& entry, char* place) {
    const std::size_t length = std::strlen(entry.d_name);
    EntryRecord record{};
    record.inode = entry.d_ino;
    record.length = static_cast<std::uint16_t>(lengthOfRecord(length));
    record.type = entry.d_type;
    std::memcpy(place, &record, kEntryNameOffset);
    std::memcpy(place + kEntryNameOffset, entry.d_name, length + 1);
    return record.length;
}

}  // namespace

int EntryReader::start(int folder) {
    stop();
    // A separate description: the stream closes its descriptor and has its own position.
    const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (own < 0) {
        return errno;
    }
    stream_ = ::fdopendir(own);
    if (stream_ == nullptr) {
        const int failure = errno;
        ::close(own);
        return failure;
    }
    return 0;
}

void EntryReader::stop() {
    if (stream_ != nullptr) {
        ::closedir(stream_);
        stream_ = nullptr;
    }
}

void EntryReader::continueThrough(int /*duplicate*/) {}

ssize_t EntryReader::read(char* room, std::size_t size) const {
    std::size_t filled = 0;
    while (filled + lengthOfRecord(sizeof(dirent::d_name)) <= size) {
        errno = 0;
        const dirent* found = ::readdir(stream_);
        if (found == nullptr) {
            return errno == 0 || filled > 0 ? static_cast<ssize_t>(filled) : -1;
        }
        filled += putRecord(*found, room + filled);
    }
    return static_cast<ssize_t>(filled);
}

}  // namespace Platform::Posix
