#include "Platform/Posix/FolderChain.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "Platform/Posix/Moments.h"

namespace Platform::Posix {

namespace {

/// Opens the folder that currently contains `folder`.
int openParent(int folder, Descriptor& parent, Identity& identity) {
    atMoment(Moment::climbing, folder, "..");
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
        remember(lowestHeld_, identity);
        ++lowestHeld_;
        if (lowestHeld_ - lowestRemembered_ > kRemembered) {
            lowestRemembered_ = lowestHeld_ - kRemembered;
        }
    }
    held_[depth_ % kHeld] = std::move(folder);
    ++depth_;
}

/// Keeps the identity of the lowest level that is no longer held open.
void FolderChain::remember(std::size_t level, const Identity& identity) {
    remembered_[level % kRemembered] = identity;
    if (level % stride_ != 0) {
        return;
    }
    if (level / stride_ == kCheckpoints) {
        for (std::size_t each = 1; each < kCheckpoints / 2; ++each) {
            checkpoints_[each] = checkpoints_[2 * each];
        }
        stride_ *= 2;
    }
    checkpoints_[level / stride_] = identity;
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
    const std::size_t parent = depth_ - 2;
    const std::size_t checkpoint = parent / stride_ * stride_;
    lowestRemembered_ = std::max(checkpoint, parent - std::min(parent, kRemembered - 1));
    Descriptor folder;
    Identity identity;
    for (std::size_t level = parent + 1; level-- > checkpoint;) {
        Descriptor above;
        if (const int failure = openParent(folder ? folder.get() : top(), above, identity); failure != 0) {
            return failure;
        }
        folder = std::move(above);
        if (level >= lowestRemembered_) {
            remembered_[level % kRemembered] = identity;
        }
    }
    return identity == checkpoints_[checkpoint / stride_] ? 0 : ESTALE;
}

void FolderChain::clear() {
    std::for_each(held_.begin(), held_.end(), [](Descriptor& each) { each.reset(-1); });
    depth_ = lowestHeld_ = lowestRemembered_ = 0;
    stride_ = kFirstStride;
}

}  // namespace Platform::Posix
