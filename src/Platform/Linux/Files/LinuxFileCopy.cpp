#include "Platform/Posix/FileCopy.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "Platform/Linux/Files/ExtendedAttributes.h"
#include "Platform/Posix/Descriptor.h"
#include "Platform/Posix/FileMode.h"
#include "Platform/Posix/Moments.h"
#include "Platform/Posix/NativeFiles.h"

namespace Platform::Posix {

namespace {

constexpr mode_t kPrivate = 0600;
/// Below this size two plain calls are cheaper than setting up a copy inside the kernel.
constexpr off_t kSmallFile = off_t{1} << 17;

struct Times {
    explicit Times(const struct stat& status) : values{status.st_atim, status.st_mtim} {}
    timespec values[2];
};

bool sameOwner(const struct stat& a, const struct stat& b) {
    return a.st_uid == b.st_uid && a.st_gid == b.st_gid;
}

/// The mode of a copy: without set-id bits if its owner is not the source's.
mode_t modeForCopy(const struct stat& source, bool ownerKept) {
    const mode_t mode = source.st_mode & kModeBits;
    return ownerKept ? mode : mode & ~kSetIdBits;
}

/// Gives the entry `name` of `folder`, or with an empty name the open item itself, the owner and group in
/// `source`, or at least the group if this process may not give items away. Returns an errno value only for
/// other failures.
int giveOwner(int folder, const char* name, const struct stat& source, bool& kept) {
    constexpr int kFlags = AT_SYMLINK_NOFOLLOW | AT_EMPTY_PATH;
    kept = ::fchownat(folder, name, source.st_uid, source.st_gid, kFlags) == 0;
    if (kept) {
        return 0;
    }
    const int failure = errno;
    if (failure != EPERM && failure != EINVAL) {
        return failure;
    }
    // This process may be allowed to change only the group; if not even that, the copy stays as it is.
    (void)(::fchownat(folder, name, static_cast<uid_t>(-1), source.st_gid, kFlags) == 0);
    return 0;
}

int writeAll(int file, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(file, bytes, count);
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        if (written > 0) {
            bytes += written;
            count -= static_cast<std::size_t>(written);
        }
    }
    return 0;
}

}  // namespace

FileCopy::FileCopy() : user_(::geteuid()), group_(::getegid()), buffer_(new char[kBufferSize]) {}

FileCopy::~FileCopy() = default;

int FileCopy::copyFile(int from, const char* name, int to, const char* newName) {
    atMoment(Moment::copying, from, name);
    // Without O_NONBLOCK a FIFO that has replaced the file would block this.
    const Descriptor source(::openat(from, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!source || ::fstat(source.get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return ENOTSUP;
    }
    // Nobody else may read the copy until it has its final owner.
    const bool ours = status.st_uid == user_ && status.st_gid == group_;
    const mode_t mode = ours ? (status.st_mode & 0777) | S_IWUSR : kPrivate;
    const Descriptor copy(::openat(to, newName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!copy) {
        return errno;
    }
    if (const int failure = copyContents(source.get(), status, copy.get()); failure != 0) {
        return failure;
    }
    return copyAttributes(source.get(), status, copy.get());
}

int FileCopy::copyContents(int source, const struct stat& status, int copy) {
    if (tryClone_ && status.st_size > 0) {
        if (::ioctl(copy, FICLONE, source) == 0) {
            return 0;
        }
        tryClone_ = false;
    }
    const bool hasHoles = status.st_blocks * 512 < status.st_size;
    if (status.st_size == 0) {
        // Files of some kernel file systems claim to be empty.
        return copyThroughBuffer(source, copy, 0, std::numeric_limits<off_t>::max());
    }
    if (!hasHoles) {
        return status.st_size > kSmallFile ? copyRange(source, copy, 0, status.st_size)
                                           : copyThroughBuffer(source, copy, 0, status.st_size);
    }
    off_t end = 0;
    for (;;) {
        const off_t begin = ::lseek(source, end, SEEK_DATA);
        if (begin < 0) {
            // ENXIO: only a hole is left. Any other refusal: the file system does not report holes.
            const int failure = errno == ENXIO ? 0 : copyRange(source, copy, end, status.st_size);
            return failure == 0 && ::ftruncate(copy, status.st_size) != 0 ? errno : failure;
        }
        end = ::lseek(source, begin, SEEK_HOLE);
        end = end < 0 ? status.st_size : end;
        if (const int failure = copyRange(source, copy, begin, end); failure != 0) {
            return failure;
        }
    }
}

int FileCopy::copyRange(int source, int copy, off_t begin, off_t end) {
    if (::lseek(copy, begin, SEEK_SET) < 0) {
        return errno;
    }
    while (tryCopyRange_ && begin < end) {
        const ssize_t count =
            ::copy_file_range(source, &begin, copy, nullptr, static_cast<std::size_t>(end - begin), 0);
        if (count > 0 || (count < 0 && errno == EINTR)) {
            continue;
        }
        if (count < 0 && (errno == ENOSPC || errno == EIO || errno == EDQUOT || errno == EFBIG)) {
            return errno;
        }
        // The kernel cannot do it, or (no bytes) claims that the file has ended: plain calls decide.
        tryCopyRange_ = count == 0;
        break;
    }
    return copyThroughBuffer(source, copy, begin, end);
}

/// Stops early where the file ends.
int FileCopy::copyThroughBuffer(int source, int copy, off_t begin, off_t end) {
    while (begin < end) {
        const auto wanted = static_cast<std::size_t>(std::min<off_t>(end - begin, kBufferSize));
        const ssize_t count = ::pread(source, buffer_.get(), wanted, begin);
        if (count == 0) {
            return 0;
        }
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        if (count > 0) {
            if (const int failure = writeAll(copy, buffer_.get(), static_cast<std::size_t>(count));
                failure != 0) {
                return failure;
            }
            begin += count;
        }
    }
    return 0;
}

int FileCopy::copyAttributes(int source, const struct stat& sourceStatus, int copy) {
    struct stat status {};
    if (::fstat(copy, &status) != 0) {
        return errno;
    }
    bool ownerKept = sameOwner(sourceStatus, status);
    if (!ownerKept) {
        if (const int failure = giveOwner(copy, "", sourceStatus, ownerKept); failure != 0) {
            return failure;
        }
        // Changing the owner clears set-id bits.
        status.st_mode &= ~kSetIdBits;
    }
    if (const int failure = Linux::copyExtendedAttributes(source, copy); failure != 0) {
        return failure;
    }
    const mode_t mode = modeForCopy(sourceStatus, ownerKept);
    if ((status.st_mode & kModeBits) != mode && ::fchmod(copy, mode) != 0) {
        return errno;
    }
    return ::futimens(copy, Times(sourceStatus).values) == 0 ? 0 : errno;
}

int FileCopy::copyLink(int from, const char* name, const struct stat& status, int to, const char* newName) {
    if (const int failure = copyTarget(from, name, to, newName); failure != 0) {
        return failure;
    }
    bool ownerKept = false;
    if (const int failure = giveOwner(to, newName, status, ownerKept); failure != 0) {
        return failure;
    }
    if (const int failure = Linux::copyExtendedAttributes(from, name, to, newName); failure != 0) {
        return failure;
    }
    return ::utimensat(to, newName, Times(status).values, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
}

int FileCopy::copySpecial(int from, const char* name, const struct stat& status, int to,
                          const char* newName) {
    if (::mknodat(to, newName, (status.st_mode & S_IFMT) | kPrivate, status.st_rdev) != 0) {
        return errno;
    }
    bool ownerKept = false;
    if (const int failure = giveOwner(to, newName, status, ownerKept); failure != 0) {
        return failure;
    }
    if (const int failure = Linux::copyExtendedAttributes(from, name, to, newName); failure != 0) {
        return failure;
    }
    // Opened by reference only, so that a link in its place is never changed and no device is touched.
    const Descriptor copy(::openat(to, newName, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!copy || setModeOfOpenItem(copy.get(), modeForCopy(status, ownerKept)) != 0) {
        return errno;
    }
    return ::utimensat(to, newName, Times(status).values, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
}

}  // namespace Platform::Posix
