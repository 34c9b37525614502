#include "Platform/Posix/PosixFileManager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Posix/FileError.h"
#include "Platform/Posix/FolderListing.h"
#include "Platform/Posix/NativeFiles.h"
#include "Platform/Posix/SystemFolders.h"
#include "Platform/Posix/TreeCopy.h"
#include "Platform/Posix/TreeOwnership.h"
#include "Platform/Posix/TreeRemoval.h"
#include "Platform/Posix/TrustedPath.h"

namespace Platform::Posix {

namespace {

constexpr mode_t kNewFolderMode = 0777;

/// Makes the last folder of a way; with `mayExist`, an existing one is not an error. Returns 0 or errno.
int makeFolder(const OpenedParent& parent, bool mayExist) {
    if (::mkdirat(parent.folder.get(), parent.name.c_str(), kNewFolderMode) == 0) {
        return 0;
    }
    const int failure = errno;
    struct stat status {};
    const bool isThere = failure == EEXIST && mayExist &&
                         ::fstatat(parent.folder.get(), parent.name.c_str(), &status, 0) == 0 &&
                         S_ISDIR(status.st_mode);
    return isThere ? 0 : failure;
}

/// Opens the item itself for a change of its mode or owner. Returns 0 or an errno value.
int openForChange(const Base::URL& item, Descriptor& opened, struct stat& status) {
    OpenedParent parent;
    if (openParent(item, parent).code != 0) {
        return EBADF;
    }
    opened = Descriptor(openItemItself(parent.folder.get(), parent.name.c_str()));
    if (!opened) {
        return EBADF;
    }
    if (::fstat(opened.get(), &status) != 0) {
        return errno;
    }
    return isSystemFolder(status) ? EPERM : 0;
}

}  // namespace

std::optional<Error> PosixFileManager::createDirectory(const Base::URL& directory, bool withIntermediates) {
    OpenedParent parent;
    WayEnd end = withIntermediates ? makeParent(directory, parent) : openParent(directory, parent);
    if (end.code == 0) {
        end.code = makeFolder(parent, withIntermediates);
    }
    if (end.code != 0) {
        return wayError(directory, "created", end);
    }
    return std::nullopt;
}

std::optional<bool> PosixFileManager::hasVisibleEntries(const Base::URL& directory, Error& error) {
    const std::string& path = directory.path();
    const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        error = fileError(path, "listed", errno);
        return std::nullopt;
    }
    FolderListing listing;
    listing.start(folder.get());
    FolderEntry entry;
    int result = 0;
    while ((result = listing.next(entry)) > 0) {
        // The dot alone hides an entry here. Foundation's option to pass over hidden files also passes over
        // those that a flag hides in the Finder (UF_HIDDEN); a folder that holds such a file is kept.
        if (entry.name[0] != '.') {
            return true;
        }
    }
    if (result < 0) {
        error = fileError(path, "listed", errno);
        return std::nullopt;
    }
    return false;
}

std::optional<Error> PosixFileManager::removeItem(const Base::URL& item) {
    OpenedParent parent;
    if (const WayEnd end = openParent(item, parent); end.code != 0) {
        return wayError(item, "removed", end);
    }
    return removeTree(parent.folder.get(), parent.name, item.path());
}

std::optional<Error> PosixFileManager::copyItem(const Base::URL& source, const Base::URL& destination) {
    OpenedParent from;
    OpenedParent to;
    WayEnd end = openParent(source, from);
    if (end.code == 0) {
        end = openParent(destination, to);
    }
    if (end.code != 0) {
        return wayError(source, "copied to \"" + destination.path() + "\"", end);
    }
    return copyTree(CopyPlace{from.folder.get(), from.name, source.path()},
                    CopyPlace{to.folder.get(), to.name, destination.path()});
}

bool PosixFileManager::itemExists(const Base::URL& item) {
    struct stat status {};
    return ::stat(item.path().c_str(), &status) == 0;
}

std::optional<FileIdentity> PosixFileManager::identity(const Base::URL& item) {
    struct stat status {};
    if (::lstat(item.path().c_str(), &status) != 0) {
        return std::nullopt;
    }
    const timespec changed = changeTime(status);
    return FileIdentity{static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino),
                        changed.tv_sec, changed.tv_nsec};
}

int PosixFileManager::setMode(const Base::URL& item, std::uint16_t mode) {
    Descriptor opened;
    struct stat status {};
    if (const int failure = openForChange(item, opened, status); failure != 0) {
        return failure;
    }
    return setModeOfOpenItem(opened.get(), mode) == 0 ? 0 : errno;
}

int PosixFileManager::setOwner(const Base::URL& item, std::uint32_t owner, std::uint32_t group) {
    Descriptor opened;
    struct stat status {};
    if (const int failure = openForChange(item, opened, status); failure != 0) {
        return failure;
    }
    return giveItem(opened.get(), status, owner, group);
}

void PosixFileManager::setOwnerOfContents(
    const Base::URL& directory, std::uint32_t owner, std::uint32_t group,
    const std::function<void(const Base::URL& item, int error)>& failed) {
    OpenedParent parent;
    if (openParent(directory, parent).code == 0) {
        setOwnerBelow(parent.folder.get(), parent.name, directory.path(), owner, group, failed);
    }
}

}  // namespace Platform::Posix
