#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Posix/NativeFiles.h"

namespace Platform::Posix {

// Reading is the least that open(2) can be asked for: there is no descriptor for an item's attributes alone.
// O_NONBLOCK and O_NOCTTY, because the item may be a FIFO without a writer or a terminal.
int openItemItself(const char* path) {
    return ::open(path, O_RDONLY | O_SYMLINK | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

int setModeOfOpenItem(int item, mode_t mode) {
    return ::fchmod(item, mode);
}

int setOwnerOfOpenItem(int item, uid_t owner, gid_t group) {
    return ::fchown(item, owner, group);
}

// Opening for search alone came long after 10.13, so the folder has to be readable.
int openFolderForLookup(const char* path) {
    return ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

timespec changeTime(const struct stat& status) {
    return status.st_ctimespec;
}

}  // namespace Platform::Posix
