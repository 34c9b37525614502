#include "Platform/Posix/TreeRemoval.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Platform/Posix/FileError.h"
#include "Platform/Posix/FolderWalk.h"
#include "Platform/Posix/Moments.h"
#include "Platform/Posix/SystemFolders.h"

namespace Platform::Posix {

namespace {

/// A folder that turns out not to be empty, because somebody adds to it, is gone through again.
constexpr int kMostGoes = 3;
/// In the whole tree: a folder of one that is gone through again is gone through as if for the first time.
constexpr int kMostRepetitions = 60;

int unlinkEntry(int parent, const char* name, int flags) {
    atMoment(flags == 0 ? Moment::removing : Moment::removingFolder, parent, name);
    return ::unlinkat(parent, name, flags) == 0 ? 0 : errno;
}

class TreeRemoval {
  public:
    TreeRemoval(int parent, const std::string& name, const std::string& path)
        : parent_(parent), name_(name), path_(path), walk_(path) {}

    std::optional<Error> run();

  private:
    void removeEntry(const FolderEntry& entry);
    void removeFolder(const char* name);
    void removeOther(const char* name);
    [[nodiscard]] int enter(const char* name, int goes);
    void endOfFolder();
    void removeLeftFolder(const char* name, bool failedBelow, int goes);

    void fail(const char* name, int code);

    /// The folder whose entry is at hand: the item's parent at the ends of the walk.
    [[nodiscard]] int at() const { return walk_.depth() > 0 ? walk_.folder() : parent_; }
    /// Whether something below the folder at hand could not be removed.
    bool& failed() { return failed_[(walk_.depth() - 1) % FolderWalk::kHeld]; }

    const int parent_;
    const std::string& name_;
    const std::string& path_;
    FolderWalk walk_;
    dev_t device_ = 0;
    /// Whether the item turned out to be a folder of the system.
    bool isSystems_ = false;
    std::array<bool, FolderWalk::kHeld> failed_{};
    /// How often each held folder has been gone through.
    std::array<int, FolderWalk::kHeld> goes_{};
    int repetitionsLeft_ = kMostRepetitions;
    std::optional<Error> firstFailure_;
};

bool isFolder(int parent, const char* name) {
    struct stat status {};
    return ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

std::optional<Error> TreeRemoval::run() {
    Identity parentIdentity;
    if (const int failure = identityOf(parent_, parentIdentity); failure != 0) {
        return fileError(path_, "removed", failure);
    }
    device_ = parentIdentity.device;
    struct stat status {};
    if (::fstatat(parent_, name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return fileError(path_, "removed", errno);
    }
    isSystems_ = !S_ISDIR(status.st_mode) && isSystemFolder(status);
    if (isSystems_) {
        fail(nullptr, EPERM);
        return std::move(firstFailure_);
    }
    removeEntry(FolderEntry{
        name_.c_str(), static_cast<unsigned char>(S_ISDIR(status.st_mode) ? DT_DIR : DT_REG), status.st_ino});
    while (walk_.depth() > 0) {
        FolderEntry entry;
        const int result = walk_.next(entry);
        if (result > 0) {
            removeEntry(entry);
            continue;
        }
        if (result < 0) {
            fail(nullptr, errno);
        }
        endOfFolder();
    }
    return std::move(firstFailure_);
}

/// Notes that `name` of the folder at hand, or with null that folder itself, could not be removed.
void TreeRemoval::fail(const char* name, int code) {
    const bool inside = walk_.depth() > 0;
    if (!firstFailure_) {
        firstFailure_ = isSystems_ ? fileError(path_, "removed", kSystemFolderReason, code)
                                   : fileError(!inside           ? path_
                                               : name == nullptr ? walk_.path()
                                                                 : walk_.pathOf(name),
                                               "removed", code);
    }
    if (inside) {
        failed() = true;
    }
}

void TreeRemoval::removeEntry(const FolderEntry& entry) {
    const bool folder = entry.type == DT_DIR || (entry.type == DT_UNKNOWN && isFolder(at(), entry.name));
    if (folder) {
        removeFolder(entry.name);
    } else {
        removeOther(entry.name);
    }
}

void TreeRemoval::removeFolder(const char* name) {
    int failure = enter(name, 1);
    switch (failure) {
        case 0:
        case ENOENT:
            return;
        case ENOTDIR:
        case ELOOP:
            // No folder any more: what stands in its place is removed as itself.
            failure = unlinkEntry(at(), name, 0);
            break;
        case EBUSY:
            break;
        default:
            // An empty folder can go even if it cannot be read.
            if (!isSystems_ && unlinkEntry(at(), name, AT_REMOVEDIR) == 0) {
                return;
            }
    }
    if (failure != 0 && failure != ENOENT) {
        fail(name, failure);
    }
}

void TreeRemoval::removeOther(const char* name) {
    const int failure = unlinkEntry(at(), name, 0);
    if (failure == 0 || failure == ENOENT) {
        return;
    }
    // A folder may have taken its place; systems disagree on the error for that.
    const bool mayBeFolder = failure == EISDIR || failure == EPERM;
    if (!mayBeFolder || enter(name, 1) != 0) {
        fail(name, failure);
    }
}

/// Steps into a folder for the given go, the first one being 1.
int TreeRemoval::enter(const char* name, int goes) {
    Descriptor folder;
    if (const int failure = openFolder(at(), name, folder); failure != 0) {
        return failure;
    }
    struct stat status {};
    if (::fstat(folder.get(), &status) != 0) {
        return errno;
    }
    if (status.st_dev != device_) {
        return EBUSY;
    }
    if (walk_.depth() > 0) {
        walk_.enter(std::move(folder), name);
    } else if (isSystemFolder(status)) {
        isSystems_ = true;
        return EPERM;
    } else {
        walk_.enterTop(std::move(folder));
    }
    failed() = false;
    goes_[(walk_.depth() - 1) % FolderWalk::kHeld] = goes;
    return 0;
}

void TreeRemoval::endOfFolder() {
    const bool failedBelow = failed();
    const int goes = goes_[(walk_.depth() - 1) % FolderWalk::kHeld];
    const bool top = walk_.depth() == 1;
    if (const int failure = walk_.leave(); failure != 0) {
        fail(nullptr, failure);
        return;
    }
    if (top) {
        removeLeftFolder(name_.c_str(), failedBelow, goes);
        return;
    }
    if (!walk_.stayedOpen()) {
        // What was known of this folder has been overwritten by deeper ones.
        failed() = firstFailure_.has_value();
        goes_[(walk_.depth() - 1) % FolderWalk::kHeld] = 1;
    }
    failed() = failed() || failedBelow;
    if (walk_.leftName() == nullptr) {
        fail(nullptr, ESTALE);
    } else {
        removeLeftFolder(walk_.leftName(), failedBelow, goes);
    }
}

void TreeRemoval::removeLeftFolder(const char* name, bool failedBelow, int goes) {
    int failure = unlinkEntry(at(), name, AT_REMOVEDIR);
    const bool notEmpty = failure == ENOTEMPTY || failure == EEXIST;
    if (notEmpty && failedBelow) {
        return;
    }
    if (notEmpty && goes < kMostGoes && repetitionsLeft_ > 0) {
        --repetitionsLeft_;
        const int again = enter(name, goes + 1);
        if (again == 0 || again == ENOENT) {
            return;
        }
    }
    if (failure == ENOTDIR) {
        failure = unlinkEntry(at(), name, 0);
    }
    if (failure != 0 && failure != ENOENT) {
        fail(name, failure);
    }
}

}  // namespace

std::optional<Error> removeTree(int parent, const std::string& name, const std::string& path) {
    return TreeRemoval(parent, name, path).run();
}

}  // namespace Platform::Posix
