#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "Platform/Posix/NativeFiles.h"

namespace Platform::Posix {

namespace {

#ifdef SYS_fchmodat2
constexpr long kChangeModeCall = SYS_fchmodat2;
#else
// The same number on every architecture (Linux 6.6).
constexpr long kChangeModeCall = 452;
#endif

/// Before fchmodat2 a descriptor opened with O_PATH could be reached only by its name.
int setModeByName(int item, mode_t mode) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "/proc/self/fd/%d", item);
    return ::chmod(name.data(), mode);
}

}  // namespace

int openItemItself(int parent, const char* name) {
    return ::openat(parent, name, O_PATH | O_NOFOLLOW | O_CLOEXEC);
}

int setModeOfOpenItem(int item, mode_t mode) {
    struct stat status {};
    if (::fstat(item, &status) != 0) {
        return -1;
    }
    if (S_ISLNK(status.st_mode)) {
        errno = EOPNOTSUPP;
        return -1;
    }
    if (::syscall(kChangeModeCall, item, "", mode, AT_EMPTY_PATH) == 0) {
        return 0;
    }
    return errno == ENOSYS ? setModeByName(item, mode) : -1;
}

int setOwnerOfOpenItem(int item, uid_t owner, gid_t group) {
    return ::fchownat(item, "", owner, group, AT_EMPTY_PATH);
}

bool changeOfOwnerKeepsSetIdBits() {
    return false;
}

int openFolderForLookup(int parent, const char* name) {
    return ::openat(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// The group's mode bits are the list's mask: nothing in it grants more than they show.
bool listLetsOthersChange(int /*folder*/) {
    return false;
}

timespec changeTime(const struct stat& status) {
    return status.st_ctim;
}

}  // namespace Platform::Posix
