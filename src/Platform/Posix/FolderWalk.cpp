#include "Platform/Posix/FolderWalk.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "Platform/Posix/Moments.h"

namespace Platform::Posix {

int openFolder(int parent, const char* name, Descriptor& folder) {
    atMoment(Moment::openingFolder, parent, name);
    folder = Descriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return folder ? 0 : errno;
}

void FolderWalk::enterTop(Descriptor top) {
    push(std::move(top));
}

void FolderWalk::enter(Descriptor folder, const char* name) {
    // The name lies in the buffer of this level's listing, which stays untouched until the walk is back here.
    entered_[(depth() - 1) % kHeld] = name;
    const std::string_view text(name);
    if (levelsLeftOut_ > 0 || path_.size() + 1 + text.size() > kLongestPath) {
        ++levelsLeftOut_;
    } else {
        if (!path_.ends_with('/')) {
            path_ += '/';
        }
        path_ += text;
    }
    push(std::move(folder));
}

void FolderWalk::push(Descriptor folder) {
    const int descriptor = folder.get();
    chain_.push(std::move(folder));
    listings_[(depth() - 1) % kHeld].start(descriptor);
}

int FolderWalk::leave() {
    stayedOpen_ = depth() < 2 || chain_.holdsParent();
    Identity left;
    const int failure = chain_.pop(left);
    leftName_ = nullptr;
    if (failure != 0 || depth() == 0) {
        return failure;
    }
    if (levelsLeftOut_ > 0) {
        --levelsLeftOut_;
    } else {
        const std::size_t slash = path_.rfind('/');
        path_.resize(slash == 0 ? 1 : slash);
    }
    if (stayedOpen_) {
        leftName_ = entered_[(depth() - 1) % kHeld];
    } else {
        findAgain(left);
    }
    return 0;
}

// The listing of a folder that was not held open begins anew; the place is where the folder that was left is
// listed. A removal has taken away what was listed before it, so this is short.
void FolderWalk::findAgain(const Identity& left) {
    if (!findAgain(left, true)) {
        (void)findAgain(left, false);
    }
}

bool FolderWalk::findAgain(const Identity& left, bool trustListedInodes) {
    FolderListing& listing = listings_[(depth() - 1) % kHeld];
    listing.start(folder());
    FolderEntry entry;
    while (listing.next(entry) > 0) {
        const bool candidate = entry.type == DT_DIR || entry.type == DT_UNKNOWN;
        if (!candidate || (trustListedInodes && entry.inode != left.inode)) {
            continue;
        }
        struct stat status {};
        if (::fstatat(folder(), entry.name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            Identity{status.st_dev, status.st_ino} == left) {
            leftName_ = entry.name;
            return true;
        }
    }
    return false;
}

std::string FolderWalk::path() const {
    return levelsLeftOut_ > 0 ? path_ + "/..." : path_;
}

std::string FolderWalk::pathOf(std::string_view name) const {
    std::string result = path();
    if (!result.ends_with('/')) {
        result += '/';
    }
    result += name;
    return result;
}

}  // namespace Platform::Posix
