#include "Platform/Posix/TreeOwnership.h"

#include <unistd.h>

#include <cerrno>

#include "Platform/Posix/FolderWalk.h"
#include "Platform/Posix/Moments.h"
#include "Platform/Posix/NativeFiles.h"
#include "Platform/Posix/SystemFolders.h"

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

/// Gives the entry away and leaves it open in `folder` when it is a folder that can be read.
int giveEntry(int parent, const FolderEntry& entry, std::uint32_t owner, std::uint32_t group,
              Descriptor& folder) {
    atMoment(Moment::givingOwner, parent, entry.name);
    folder.reset(-1);
    Descriptor item;
    const bool isFolder = mayBeFolder(entry) && openFolder(parent, entry.name, folder) == 0;
    if (!isFolder) {
        item = Descriptor(openItemItself(parent, entry.name));
        if (!item) {
            return EBADF;
        }
    }
    const int opened = isFolder ? folder.get() : item.get();
    struct stat status {};
    return ::fstat(opened, &status) == 0 ? giveItem(opened, status, owner, group) : errno;
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
    FolderWalk walk(path);
    walk.enterTop(std::move(folder));
    while (walk.depth() > 0) {
        FolderEntry entry;
        if (walk.next(entry) <= 0) {
            if (const int failure = walk.leave(); failure != 0) {
                failed(Base::URL::fileURL(walk.path()), failure);
            }
            continue;
        }
        if (const int failure = giveEntry(walk.folder(), entry, owner, group, folder); failure != 0) {
            failed(Base::URL::fileURL(walk.pathOf(entry.name)), failure);
        }
        if (folder) {
            walk.enter(std::move(folder), entry.name);
        }
    }
}

}  // namespace Platform::Posix
