#include "Platform/Posix/TreeOwnership.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Posix/FolderWalk.h"

namespace Platform::Posix {

namespace {

bool mayBeFolder(const FolderEntry& entry) {
    return entry.type == DT_DIR || entry.type == DT_UNKNOWN;
}

}  // namespace

void setOwnerBelow(const Base::URL& directory, std::uint32_t owner, std::uint32_t group,
                   const std::function<void(const Base::URL& item, int error)>& failed) {
    Descriptor folder;
    if (openFolder(AT_FDCWD, directory.path().c_str(), folder) != 0) {
        return;
    }
    FolderWalk walk(directory.path());
    walk.enterTop(std::move(folder));
    while (walk.depth() > 0) {
        FolderEntry entry;
        if (walk.next(entry) <= 0) {
            if (const int failure = walk.leave(); failure != 0) {
                failed(Base::URL::fileURL(walk.path()), failure);
            }
            continue;
        }
        if (::fchownat(walk.folder(), entry.name, owner, group, AT_SYMLINK_NOFOLLOW) != 0) {
            // An item that has gone could not have been opened.
            failed(Base::URL::fileURL(walk.pathOf(entry.name)), errno == ENOENT ? EBADF : errno);
        }
        if (mayBeFolder(entry) && openFolder(walk.folder(), entry.name, folder) == 0) {
            walk.enter(std::move(folder), entry.name);
        }
    }
}

}  // namespace Platform::Posix
