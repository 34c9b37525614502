#include "Platform/Posix/PosixFileManager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Posix/FileError.h"
#include "Platform/Posix/FolderWalk.h"
#include "Platform/Posix/NativeFiles.h"
#include "Platform/Posix/TreeOwnership.h"
#include "Platform/Posix/TreeRemoval.h"

namespace Platform::Posix {

namespace {

constexpr mode_t kNewFolderMode = 0777;

bool isFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// Makes one folder; one that is already there is no error. Returns 0 or errno.
int makeFolder(const std::string& path) {
    if (::mkdir(path.c_str(), kNewFolderMode) == 0) {
        return 0;
    }
    const int failure = errno;
    return failure == EEXIST && isFolder(path) ? 0 : failure;
}

/// Makes a folder and those above it that are missing, beginning below the lowest one that is there.
int makeFolders(const std::string& path) {
    std::size_t length = path.size();
    int failure = makeFolder(path);
    while (failure == ENOENT && length > 1) {
        length = path.rfind('/', length - 1);
        if (length == 0 || length == std::string::npos) {
            return failure;
        }
        failure = makeFolder(path.substr(0, length));
    }
    while (failure == 0 && length < path.size()) {
        const std::size_t slash = path.find('/', length + 1);
        length = slash == std::string::npos ? path.size() : slash;
        failure = makeFolder(path.substr(0, length));
    }
    return failure;
}

/// Whether the entry is the root folder, which can be reached under other names too.
bool isRoot(int parent, const std::string& name) {
    struct stat item {};
    struct stat root {};
    return ::fstatat(parent, name.c_str(), &item, AT_SYMLINK_NOFOLLOW) == 0 && ::stat("/", &root) == 0 &&
           item.st_dev == root.st_dev && item.st_ino == root.st_ino;
}

}  // namespace

int openParent(const Base::URL& item, OpenedParent& parent) {
    const std::string& path = item.path();
    const std::size_t slash = path.rfind('/');
    parent.name = path.substr(slash + 1);
    if (parent.name.empty()) {
        return EBUSY;
    }
    if (parent.name == "." || parent.name == "..") {
        return EINVAL;
    }
    parent.folder = Descriptor(openFolderForLookup(slash == 0 ? "/" : path.substr(0, slash).c_str()));
    return parent.folder ? 0 : errno;
}

std::optional<Error> PosixFileManager::createDirectory(const Base::URL& directory, bool withIntermediates) {
    const std::string& path = directory.path();
    int failure = 0;
    if (withIntermediates) {
        failure = makeFolders(path);
    } else if (::mkdir(path.c_str(), kNewFolderMode) != 0) {
        failure = errno;
    }
    if (failure != 0) {
        return fileError(path, "created", failure);
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
    int failure = openParent(item, parent);
    if (failure == 0 && isRoot(parent.folder.get(), parent.name)) {
        failure = EBUSY;
    }
    if (failure != 0) {
        return fileError(item.path(), "removed", failure);
    }
    return removeTree(parent.folder.get(), parent.name, item.path());
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
    const Descriptor opened(openItemItself(item.path().c_str()));
    if (!opened) {
        return EBADF;
    }
    return setModeOfOpenItem(opened.get(), mode) == 0 ? 0 : errno;
}

int PosixFileManager::setOwner(const Base::URL& item, std::uint32_t owner, std::uint32_t group) {
    const Descriptor opened(openItemItself(item.path().c_str()));
    if (!opened) {
        return EBADF;
    }
    return setOwnerOfOpenItem(opened.get(), owner, group) == 0 ? 0 : errno;
}

void PosixFileManager::setOwnerOfContents(
    const Base::URL& directory, std::uint32_t owner, std::uint32_t group,
    const std::function<void(const Base::URL& item, int error)>& failed) {
    setOwnerBelow(directory, owner, group, failed);
}

}  // namespace Platform::Posix
