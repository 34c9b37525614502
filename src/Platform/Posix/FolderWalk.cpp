#include "Platform/Posix/FolderWalk.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "Platform/Posix/Moments.h"

namespace Platform::Posix {

int openFolder(int parent, const char* name, Descriptor& folder) {
    atMoment(Moment::openingFolder, parent, name);
    folder = Descriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return folder ? 0 : errno;
}

void FolderPath::append(std::string_view name) {
    if (levelsLeftOut_ > 0 || text_.size() + 1 + name.size() > kLongest) {
        ++levelsLeftOut_;
        return;
    }
    if (!text_.ends_with('/')) {
        text_ += '/';
    }
    text_ += name;
}

void FolderPath::removeLast() {
    if (levelsLeftOut_ > 0) {
        --levelsLeftOut_;
        return;
    }
    const std::size_t slash = text_.rfind('/');
    text_.resize(slash == 0 ? 1 : slash);
}

void FolderWalk::enterTop(Descriptor top) {
    push(std::move(top));
}

void FolderWalk::enter(Descriptor folder, const char* name) {
    entered_[(depth() - 1) % kHeld] = name;
    path_.append(name);
    push(std::move(folder));
}

void FolderWalk::push(Descriptor folder) {
    const int descriptor = folder.get();
    chain_.push(std::move(folder));
    listing(depth() - 1).start(descriptor);
}

int FolderWalk::leave() {
    stayedOpen_ = depth() < 2 || chain_.holdsParent();
    if (hasGiven(depth() - 1)) {
        given_.pop_back();
    }
    Identity left;
    const int failure = chain_.pop(left);
    leftName_ = nullptr;
    if (failure != 0 || depth() == 0) {
        return failure;
    }
    path_.removeLast();
    if (stayedOpen_) {
        leftName_ = entered_[(depth() - 1) % kHeld].c_str();
    } else {
        findAgain(left);
    }
    return 0;
}

// The listing of a folder that was not held open begins again; the place to resume is the entry of the folder
// that was left. A removal has taken away what was listed before it, so the search is short.
void FolderWalk::findAgain(const Identity& left) {
    if (!findAgain(left, true)) {
        (void)findAgain(left, false);
    }
}

bool FolderWalk::findAgain(const Identity& left, bool trustListedInodes) {
    FolderListing& entries = listings_[(depth() - 1) % kHeld];
    entries.start(folder());
    FolderEntry entry;
    while (entries.next(entry) > 0) {
        const bool candidate = entry.type == DT_DIR || entry.type == DT_UNKNOWN;
        if (!candidate || (trustListedInodes && entry.inode != left.inode)) {
            continue;
        }
        struct stat status {};
        if (::fstatat(folder(), entry.name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            Identity{status.st_dev, status.st_ino} == left) {
            entered_[(depth() - 1) % kHeld] = entry.name;
            leftName_ = entered_[(depth() - 1) % kHeld].c_str();
            return true;
        }
    }
    return false;
}

std::size_t FolderWalk::levelWorthGiving() {
    // Fewer files are done sooner than handed over, if there is no folder among them.
    constexpr std::size_t kWorthHandingOver = 32;
    if (given_.size() == kMostGiven) {
        return depth();
    }
    std::size_t level = std::max(given_.empty() ? 0 : given_.back().level + 1, chain_.lowestHeld());
    for (; level + 1 < depth(); ++level) {
        if (listing(level).holdsFolder() || listing(level).holds(kWorthHandingOver)) {
            return level;
        }
    }
    // Half of the current folder is kept.
    return level < depth() && listing(level).holds(2 * kWorthHandingOver) ? level : depth();
}

bool FolderWalk::give(std::size_t level, FolderWalk& other) {
    Descriptor folder(::fcntl(chain_.held(level), F_DUPFD_CLOEXEC, 0));
    if (!folder) {
        return false;
    }
    const bool atHand = level + 1 == depth();
    FolderListing kept = atHand ? listing(level).takeFirstHalf() : FolderListing();
    other.listings_[0] = std::move(listing(level));
    other.listings_[0].continueThrough(folder.get());
    other.chain_.push(std::move(folder));
    other.path_ = path_;
    for (std::size_t each = level + 1; each < depth(); ++each) {
        other.path_.removeLast();
    }
    given_.push_back(Given{level, std::move(kept)});
    return true;
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
