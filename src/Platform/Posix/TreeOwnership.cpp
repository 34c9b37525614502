#include "Platform/Posix/TreeOwnership.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Posix/FolderWalk.h"
#include "Platform/Posix/Moments.h"
#include "Platform/Posix/NativeFiles.h"
#include "Platform/Posix/SystemFolders.h"
#include "Platform/Posix/TrustedPath.h"

namespace Platform::Posix {

namespace {

constexpr mode_t kModeBits = 07777;
constexpr mode_t kSetIdBits = S_ISUID | S_ISGID;

bool mayBeFolder(const FolderEntry& entry) {
    return entry.type == DT_DIR || entry.type == DT_UNKNOWN;
}

bool isProgram(const struct stat& status) {
    return S_ISREG(status.st_mode) && (status.st_mode & kSetIdBits) != 0;
}

/// Gives away, by its name, an entry of a folder that root alone can change. Returns 0, an errno value, or
/// kToBeOpened for an item that needs more than that.
constexpr int kToBeOpened = -1;
int giveByName(int parent, const char* name, std::uint32_t owner, std::uint32_t group) {
    struct stat status {};
    if (::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return EBADF;
    }
    const bool changes = status.st_uid != owner || status.st_gid != group;
    const bool simple =
        !S_ISREG(status.st_mode) ||
        (!isProgram(status) && (!changes || status.st_nlink == 1) && !changeOfOwnerKeepsSetIdBits());
    if (!simple) {
        return kToBeOpened;
    }
    if (::fchownat(parent, name, owner, group, AT_SYMLINK_NOFOLLOW) == 0) {
        return 0;
    }
    return errno == ENOENT ? EBADF : errno;
}

class TreeOwnership {
  public:
    TreeOwnership(std::uint32_t owner, std::uint32_t group) : owner_(owner), group_(group) {}

    /// Tells whether root alone can change the folder at hand.
    void setSheltered(bool sheltered) { sheltered_ = sheltered; }
    /// Gives the entry away; opens `folder` when it is a folder that can be read.
    [[nodiscard]] int give(int parent, const FolderEntry& entry, Descriptor& folder) const;

  private:
    const std::uint32_t owner_;
    const std::uint32_t group_;
    bool sheltered_ = false;
};

int TreeOwnership::give(int parent, const FolderEntry& entry, Descriptor& folder) const {
    atMoment(Moment::givingOwner, parent, entry.name);
    folder.reset(-1);
    const bool isFolder = mayBeFolder(entry) && openFolder(parent, entry.name, folder) == 0;
    if (!isFolder && sheltered_) {
        if (const int result = giveByName(parent, entry.name, owner_, group_); result != kToBeOpened) {
            return result;
        }
    }
    Descriptor item;
    if (!isFolder) {
        item = Descriptor(openItemItself(parent, entry.name));
        if (!item) {
            return EBADF;
        }
    }
    const int opened = isFolder ? folder.get() : item.get();
    struct stat status {};
    return ::fstat(opened, &status) == 0 ? giveItem(opened, status, owner_, group_) : errno;
}

}  // namespace

int giveItem(int item, const struct stat& status, std::uint32_t owner, std::uint32_t group) {
    const bool changes = status.st_uid != owner || status.st_gid != group;
    if (changes && S_ISREG(status.st_mode) && status.st_nlink > 1) {
        return EMLINK;
    }
    const mode_t mode = status.st_mode & kModeBits;
    // Not even for a moment may there be somebody's program that runs as its new owner.
    if (changes && isProgram(status) && setModeOfOpenItem(item, mode & ~kSetIdBits) != 0) {
        return errno;
    }
    if (setOwnerOfOpenItem(item, owner, group) != 0) {
        return errno;
    }
    struct stat now {};
    if (!S_ISREG(status.st_mode) || ::fstat(item, &now) != 0) {
        return 0;
    }
    // The old owner may have set the bits anew in between; where the system takes them away from a program
    // that keeps its owner, they come back.
    const mode_t wanted = changes ? now.st_mode & kModeBits & ~kSetIdBits : mode;
    return (now.st_mode & kModeBits) == wanted || setModeOfOpenItem(item, wanted) == 0 ? 0 : errno;
}

void setOwnerBelow(int parent, const std::string& name, const std::string& path, std::uint32_t owner,
                   std::uint32_t group, const std::function<void(const Base::URL& item, int error)>& failed) {
    Descriptor folder;
    struct stat status {};
    if (openFolder(parent, name.c_str(), folder) != 0 || ::fstat(folder.get(), &status) != 0 ||
        isSystemFolder(status)) {
        return;
    }
    TreeOwnership ownership(owner, group);
    FolderWalk walk(path);
    walk.enterTop(std::move(folder));
    ownership.setSheltered(onlyRootChanges(walk.folder()));
    while (walk.depth() > 0) {
        FolderEntry entry;
        if (walk.next(entry) <= 0) {
            if (const int failure = walk.leave(); failure != 0) {
                failed(Base::URL::fileURL(walk.path()), failure);
            }
            ownership.setSheltered(walk.depth() > 0 && onlyRootChanges(walk.folder()));
            continue;
        }
        if (const int failure = ownership.give(walk.folder(), entry, folder); failure != 0) {
            failed(Base::URL::fileURL(walk.pathOf(entry.name)), failure);
        }
        if (folder) {
            walk.enter(std::move(folder), entry.name);
            ownership.setSheltered(onlyRootChanges(walk.folder()));
        }
    }
}

}  // namespace Platform::Posix
