// Folder entries on Linux: getdents64(2) into a large buffer, which saves half of the calls that readdir(3)
// makes.
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Posix/EntryReader.h"

namespace Platform::Posix {

int EntryReader::start(int folder) {
    folder_ = folder;
    // Somebody may have read it already, with this reader or another one.
    return ::lseek(folder, 0, SEEK_SET) == 0 ? 0 : errno;
}

void EntryReader::stop() {
    folder_ = -1;
}

// Duplicated descriptors share their position.
void EntryReader::continueThrough(int duplicate) {
    folder_ = duplicate;
}

ssize_t EntryReader::read(char* room, std::size_t size) const {
    const long count = ::syscall(SYS_getdents64, folder_, room, size);
    // A folder that was removed while it was open has no entries left.
    return count < 0 && errno == ENOENT ? 0 : static_cast<ssize_t>(count);
}

}  // namespace Platform::Posix
