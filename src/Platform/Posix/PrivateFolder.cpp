#include "Platform/Posix/PrivateFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <vector>

#include "Platform/Posix/FileError.h"
#include "Platform/Posix/FolderChain.h"
#include "Platform/Posix/FolderListing.h"
#include "Platform/Posix/TreeRemoval.h"

namespace Platform::Posix {

namespace {

constexpr mode_t kOwnerOnly = 0700;
constexpr const char* kOutcome = "kept to its owner";

/// EPERM if others than `owner` can replace the contents of the open folder.
int expectGuarded(int folder, uid_t owner) {
    struct stat status {};
    if (::fstat(folder, &status) != 0) {
        return errno;
    }
    const bool others = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 && (status.st_mode & S_ISVTX) == 0;
    return status.st_uid == owner && !others ? 0 : EPERM;
}

Descriptor openFolderItself(int parent, const char* name) {
    return Descriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

int lock(int folder, bool wait) {
    while (::flock(folder, wait ? LOCK_EX : LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

}  // namespace

PrivateFolder::~PrivateFolder() {
    // The next call removes what cannot be removed now.
    static_cast<void>(remove());
}

std::optional<Error> PrivateFolder::take(const Base::URL& location, const Ground& ground) {
    path_ = location.path();
    if (std::optional<Error> failure = openParent(ground)) {
        return failure;
    }
    int failure = open(Wanted::anyhow);
    if (failure == 0) {
        failure = claim(ground);
    }
    if (failure != 0) {
        folder_.reset(-1);
        return fileError(path_, kOutcome, failure);
    }
    return empty();
}

std::optional<Error> PrivateFolder::takeLeftover(const Base::URL& location, const Ground& ground) {
    path_ = location.path();
    if (std::optional<Error> failure = openParent(ground)) {
        return failure;
    }
    int failure = open(Wanted::whenLeftOver);
    if (failure == 0) {
        failure = claim(ground);
    }
    if (failure == 0) {
        return std::nullopt;
    }
    folder_.reset(-1);
    // It does not exist, or its user removes it.
    return failure == ENOENT || failure == EWOULDBLOCK ? std::nullopt
                                                       : std::optional(fileError(path_, kOutcome, failure));
}

std::optional<Error> PrivateFolder::remove() {
    if (!folder_) {
        return std::nullopt;
    }
    // The lock is still held, so nobody else can have made the folder again.
    std::optional<Error> failure = removeTree(parent_.get(), name_, path_);
    folder_.reset(-1);
    return failure;
}

std::optional<Error> PrivateFolder::openParent(const Ground& ground) {
    std::size_t at = ground.top.size();
    Descriptor folder(::open(ground.top.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    for (;;) {
        const std::string reached = path_.substr(0, at);
        if (!folder) {
            return fileError(reached, kOutcome, errno);
        }
        if (const int failure = expectGuarded(folder.get(), ground.owner); failure != 0) {
            return fileError(reached, kOutcome, failure);
        }
        const std::size_t begin = path_.find_first_not_of('/', at);
        if (begin == std::string::npos) {
            return fileError(path_, kOutcome, EINVAL);
        }
        const std::size_t end = path_.find('/', begin);
        name_ = path_.substr(begin, end - begin);
        if (end == std::string::npos) {
            parent_ = std::move(folder);
            return std::nullopt;
        }
        folder = openFolderItself(folder.get(), name_.c_str());
        at = end;
    }
}

int PrivateFolder::open(Wanted wanted) {
    // The previous holder may remove the folder just before we get the lock; then there is another, or none.
    do {
        if (wanted == Wanted::anyhow && ::mkdirat(parent_.get(), name_.c_str(), kOwnerOnly) != 0 &&
            errno != EEXIST) {
            return errno;
        }
        folder_ = openFolderItself(parent_.get(), name_.c_str());
        if (!folder_) {
            if (errno == ENOENT && wanted == Wanted::anyhow) {
                continue;
            }
            return errno;
        }
        if (const int failure = lock(folder_.get(), wanted == Wanted::anyhow); failure != 0) {
            return failure;
        }
    } while (!isStillThere());
    return 0;
}

bool PrivateFolder::isStillThere() const {
    struct stat there {};
    Identity here;
    return folder_ && identityOf(folder_.get(), here) == 0 &&
           ::fstatat(parent_.get(), name_.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0 &&
           Identity{there.st_dev, there.st_ino} == here;
}

int PrivateFolder::claim(const Ground& ground) const {
    if (const int failure = expectGuarded(folder_.get(), ground.owner); failure != 0) {
        return failure;
    }
    return ::fchmod(folder_.get(), kOwnerOnly) == 0 ? 0 : errno;
}

std::optional<Error> PrivateFolder::empty() const {
    std::vector<std::string> names;
    FolderListing listing;
    listing.start(folder_.get());
    FolderEntry entry;
    while (listing.next(entry) > 0) {
        names.emplace_back(entry.name);
    }
    for (const std::string& name : names) {
        if (std::optional<Error> failure = removeTree(folder_.get(), name, path_ + "/" + name)) {
            return failure;
        }
    }
    return std::nullopt;
}

}  // namespace Platform::Posix
