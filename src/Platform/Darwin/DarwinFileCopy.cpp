#include <copyfile.h>
#include <fcntl.h>
#include <sys/clonefile.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Platform/Posix/Descriptor.h"
#include "Platform/Posix/FileCopy.h"
#include "Platform/Posix/FileMode.h"
#include "Platform/Posix/Moments.h"
#include "Platform/Posix/NativeFiles.h"

namespace Platform::Posix {

namespace {

constexpr mode_t kPrivate = 0600;

/// Gives an open copy the owner, mode and times in `source`; without set-id bits where the owner cannot be
/// kept.
int copyStatus(int copy, const struct stat& source) {
    bool ownerKept = ::fchown(copy, source.st_uid, source.st_gid) == 0;
    if (!ownerKept) {
        if (errno != EPERM && errno != EINVAL) {
            return errno;
        }
        // The group alone may be this process's to give; if not, the copy stays as it is.
        (void)::fchown(copy, static_cast<uid_t>(-1), source.st_gid);
        struct stat status {};
        ownerKept =
            ::fstat(copy, &status) == 0 && status.st_uid == source.st_uid && status.st_gid == source.st_gid;
    }
    const mode_t mode = source.st_mode & kModeBits;
    if (::fchmod(copy, ownerKept ? mode : mode & ~kSetIdBits) != 0) {
        return errno;
    }
    std::array<timeval, 2> times{};
    TIMESPEC_TO_TIMEVAL(&times[0], &source.st_atimespec);
    TIMESPEC_TO_TIMEVAL(&times[1], &source.st_mtimespec);
    return ::futimes(copy, times.data()) == 0 ? 0 : errno;
}

}  // namespace

FileCopy::FileCopy() : user_(::geteuid()), group_(::getegid()) {}

FileCopy::~FileCopy() = default;

int FileCopy::copyFile(int from, const char* name, int to, const char* newName) {
    atMoment(Moment::copying, from, name);
    // Without O_NONBLOCK a FIFO that has taken the file's place would hold this up.
    const Descriptor source(::openat(from, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!source || ::fstat(source.get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return ENOTSUP;
    }
    // A clone keeps everything, its owner too when root makes it, but not for certain set-id bits.
    if (tryClone_ && user_ == 0 && (status.st_mode & kSetIdBits) == 0) {
        if (::fclonefileat(source.get(), to, newName, 0) == 0) {
            return 0;
        }
        if (errno == EEXIST) {
            return EEXIST;
        }
        tryClone_ = false;
    }
    const Descriptor copy(
        ::openat(to, newName, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kPrivate));
    if (!copy || ::fcopyfile(source.get(), copy.get(), nullptr, COPYFILE_DATA) != 0) {
        return errno;
    }
    return copyAttributes(source.get(), status, copy.get());
}

int FileCopy::copyAttributes(int source, const struct stat& sourceStatus, int copy) {
    if (::fcopyfile(source, copy, nullptr, COPYFILE_XATTR | COPYFILE_ACL) != 0 && errno != ENOTSUP &&
        errno != EPERM) {
        return errno;
    }
    return copyStatus(copy, sourceStatus);
}

int FileCopy::copyLink(int from, const char* name, const struct stat& status, int to, const char* newName) {
    if (const int failure = copyTarget(from, name, to, newName); failure != 0) {
        return failure;
    }
    const Descriptor copy(openItemItself(to, newName));
    return copy ? copyStatus(copy.get(), status) : errno;
}

// Before macOS 13 there is no call that makes one relative to an open folder.
int FileCopy::copySpecial(int /*from*/, const char* /*name*/, const struct stat& /*status*/, int /*to*/,
                          const char* /*newName*/) {
    return ENOTSUP;
}

}  // namespace Platform::Posix
