#include "Platform/Posix/FolderChain.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

namespace Platform::Posix {

namespace {

/// Opens the folder that `folder` lies in at this moment.
int openParent(int folder, Descriptor& parent, Identity& identity) {
    parent = Descriptor(::openat(folder, "..", O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return parent ? identityOf(parent.get(), identity) : errno;
}

}  // namespace

int identityOf(int descriptor, Identity& identity) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        return errno;
    }
    identity = Identity{status.st_dev, status.st_ino};
    return 0;
}

void FolderChain::push(Descriptor folder) {
    if (depth_ - lowestHeld_ == kHeld) {
        Descriptor& oldest = held_[lowestHeld_ % kHeld];
        Identity identity;
        // Cannot fail on an open folder; if it did, the empty identity would match nothing on the way up.
        (void)identityOf(oldest.get(), identity);
        remembered_[lowestHeld_ % kRemembered] = identity;
        if (lowestHeld_ == 0) {
            root_ = identity;
        }
        ++lowestHeld_;
        if (lowestHeld_ - lowestRemembered_ > kRemembered) {
            lowestRemembered_ = lowestHeld_ - kRemembered;
        }
    }
    held_[depth_ % kHeld] = std::move(folder);
    ++depth_;
}

int FolderChain::pop(Identity& left) {
    const bool parentMissing = depth_ >= 2 && !holdsParent();
    Descriptor parent;
    if (parentMissing) {
        int failure = identityOf(top(), left);
        if (failure == 0) {
            failure = reopenParent(parent);
        }
        if (failure != 0) {
            clear();
            return failure;
        }
    }
    held_[(depth_ - 1) % kHeld].reset(-1);
    --depth_;
    if (parentMissing) {
        lowestHeld_ = depth_ - 1;
        held_[lowestHeld_ % kHeld] = std::move(parent);
    }
    return 0;
}

int FolderChain::reopenParent(Descriptor& parent) {
    const std::size_t level = depth_ - 2;
    if (lowestRemembered_ > level) {
        if (const int failure = rememberAnew(); failure != 0) {
            return failure;
        }
    }
    Identity identity;
    if (const int failure = openParent(top(), parent, identity); failure != 0) {
        return failure;
    }
    return identity == remembered_[level % kRemembered] ? 0 : ESTALE;
}

int FolderChain::rememberAnew() {
    const std::size_t highest = depth_ - 1;
    lowestRemembered_ = highest > kRemembered ? highest - kRemembered : 0;
    Descriptor folder;
    Identity identity;
    for (std::size_t level = highest; level-- > 0;) {
        Descriptor above;
        if (const int failure = openParent(folder ? folder.get() : top(), above, identity); failure != 0) {
            return failure;
        }
        folder = std::move(above);
        if (level >= lowestRemembered_) {
            remembered_[level % kRemembered] = identity;
        }
    }
    return identity == root_ ? 0 : ESTALE;
}

void FolderChain::clear() {
    std::for_each(held_.begin(), held_.end(), [](Descriptor& each) { each.reset(-1); });
    depth_ = lowestHeld_ = lowestRemembered_ = 0;
}

}  // namespace Platform::Posix
