#include "Platform/Posix/TreeRemoval.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <memory>

#include "Platform/Posix/FileError.h"
#include "Platform/Posix/FirstFailure.h"
#include "Platform/Posix/Moments.h"
#include "Platform/Posix/SystemFolders.h"
#include "Platform/Posix/TreeErrand.h"

namespace Platform::Posix {

namespace {

/// A folder that turns out not to be empty, because somebody adds to it, is walked again.
constexpr int kMostGoes = 3;
/// In the whole tree: the subfolders of a folder that is walked again start from their first go.
constexpr int kMostRepetitions = 60;

/// Each holds up to FolderChain::kHeld descriptors.
constexpr std::size_t kMostRemovals = 8;

int unlinkEntry(int parent, const char* name, int flags) {
    atMoment(flags == 0 ? Moment::removing : Moment::removingFolder, parent, name);
    return ::unlinkat(parent, name, flags) == 0 ? 0 : errno;
}

/// Shared by the errands of one removal.
struct Removal {
    Removal(int folder, const std::string& itemName, const std::string& itemPath)
        : parent(folder), name(itemName), path(itemPath) {}

    const int parent;
    const std::string& name;
    const std::string& path;
    dev_t device = 0;
    std::atomic<int> repetitionsLeft = kMostRepetitions;
    FirstFailure failure;
};

class RemovalErrand : public TreeErrand {
  public:
    /// For the item itself.
    explicit RemovalErrand(Removal& removal) : TreeErrand(removal.path), removal_(removal) {}
    RemovalErrand(Removal& removal, std::shared_ptr<Meeting> meeting)
        : TreeErrand(removal.path, std::move(meeting)), removal_(removal) {}

    /// Removes the item, or steps into it.
    void begin(const struct stat& status);

  private:
    void take(const FolderEntry& entry) override;
    void failListing(int code) override { fail(nullptr, code); }
    void endFolder(bool failedElsewhere) override;
    void end(FolderCrew& crew) override;
    std::unique_ptr<TreeErrand> newPart(std::size_t level, std::shared_ptr<Meeting> meeting) override;

    void removeFolder(const char* name);
    void removeOther(const char* name);
    [[nodiscard]] int enter(const char* name, int goes);
    void removeLeftFolder(const char* name, bool failedBelow, int goes);

    void fail(const char* name, int code);

    /// The folder that contains the current entry: the item's parent at the ends of the walk.
    [[nodiscard]] int at() const { return walk_.depth() > 0 ? walk_.folder() : removal_.parent; }
    /// Whether something below the current folder could not be removed.
    bool& failed() { return failed_[(walk_.depth() - 1) % FolderWalk::kHeld]; }
    int& goes() { return goes_[(walk_.depth() - 1) % FolderWalk::kHeld]; }

    Removal& removal_;
    /// Whether the item turned out to be a folder of the system.
    bool isSystems_ = false;
    std::array<bool, FolderWalk::kHeld> failed_{};
    /// How often each held folder has been walked; unused for the top one of a part, which several errands
    /// walk.
    std::array<int, FolderWalk::kHeld> goes_{};
    bool failedAnywhere_ = false;
    FirstFailure firstFailure_;
};

bool isFolder(int parent, const char* name) {
    struct stat status {};
    return ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

void RemovalErrand::begin(const struct stat& status) {
    isSystems_ = !S_ISDIR(status.st_mode) && isSystemFolder(status);
    if (isSystems_) {
        fail(nullptr, EPERM);
        return;
    }
    const auto type = static_cast<unsigned char>(S_ISDIR(status.st_mode) ? DT_DIR : DT_REG);
    take(FolderEntry{removal_.name.c_str(), type, status.st_ino});
}

void RemovalErrand::end(FolderCrew& /*crew*/) {
    removal_.failure.join(firstFailure_);
    if (isPart() && failedAnywhere_) {
        meeting()->noteFailure();
    }
}

std::unique_ptr<TreeErrand> RemovalErrand::newPart(std::size_t /*level*/, std::shared_ptr<Meeting> meeting) {
    return std::make_unique<RemovalErrand>(removal_, std::move(meeting));
}

/// Notes that `name` in the current folder, or the folder itself if null, could not be removed.
void RemovalErrand::fail(const char* name, int code) {
    const bool inside = walk_.depth() > 0;
    std::string path = !inside ? removal_.path : name == nullptr ? walk_.path() : walk_.pathOf(name);
    Error error =
        isSystems_ ? fileError(path, "removed", kSystemFolderReason, code) : fileError(path, "removed", code);
    firstFailure_.note(std::move(path), std::move(error));
    failedAnywhere_ = true;
    if (inside) {
        failed() = true;
    }
}

void RemovalErrand::take(const FolderEntry& entry) {
    const bool folder = entry.type == DT_DIR || (entry.type == DT_UNKNOWN && isFolder(at(), entry.name));
    if (folder) {
        removeFolder(entry.name);
    } else {
        removeOther(entry.name);
    }
}

void RemovalErrand::removeFolder(const char* name) {
    int failure = enter(name, 1);
    switch (failure) {
        case 0:
        case ENOENT:
            return;
        case ENOTDIR:
        case ELOOP:
            // No longer a folder: whatever has replaced it is removed as itself.
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

void RemovalErrand::removeOther(const char* name) {
    const int failure = unlinkEntry(at(), name, 0);
    if (failure == 0 || failure == ENOENT) {
        return;
    }
    // A folder may have replaced it; systems disagree on the error for that.
    const bool mayBeFolder = failure == EISDIR || failure == EPERM;
    if (!mayBeFolder || enter(name, 1) != 0) {
        fail(name, failure);
    }
}

/// Steps into a folder for the given go, counted from 1.
int RemovalErrand::enter(const char* name, int goes) {
    Descriptor folder;
    if (const int failure = openFolder(at(), name, folder); failure != 0) {
        return failure;
    }
    struct stat status {};
    if (::fstat(folder.get(), &status) != 0) {
        return errno;
    }
    if (status.st_dev != removal_.device) {
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
    this->goes() = goes;
    return 0;
}

void RemovalErrand::endFolder(bool failedElsewhere) {
    const bool failedBelow = failed() || failedElsewhere;
    failedAnywhere_ = failedAnywhere_ || failedElsewhere;
    const int goes = this->goes();
    const bool top = walk_.depth() == 1;
    if (const int failure = walk_.leave(); failure != 0) {
        fail(nullptr, failure);
        return;
    }
    if (top) {
        if (!isPart()) {
            removeLeftFolder(removal_.name.c_str(), failedBelow, goes);
        }
        return;
    }
    if (!walk_.stayedOpen()) {
        // Deeper folders have overwritten this folder's state.
        failed() = failedAnywhere_;
        this->goes() = 1;
    }
    failed() = failed() || failedBelow;
    if (walk_.leftName() == nullptr) {
        fail(nullptr, ESTALE);
    } else {
        removeLeftFolder(walk_.leftName(), failedBelow, goes);
    }
}

void RemovalErrand::removeLeftFolder(const char* name, bool failedBelow, int goes) {
    int failure = unlinkEntry(at(), name, AT_REMOVEDIR);
    const bool notEmpty = failure == ENOTEMPTY || failure == EEXIST;
    if (notEmpty && failedBelow) {
        return;
    }
    if (notEmpty && goes < kMostGoes && removal_.repetitionsLeft.fetch_sub(1) > 0) {
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
    Removal removal(parent, name, path);
    Identity parentIdentity;
    if (const int failure = identityOf(parent, parentIdentity); failure != 0) {
        return fileError(path, "removed", failure);
    }
    removal.device = parentIdentity.device;
    struct stat status {};
    if (::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return fileError(path, "removed", errno);
    }
    auto errand = std::make_unique<RemovalErrand>(removal);
    errand->begin(status);
    FolderCrew(kMostRemovals).run(std::move(errand));
    return removal.failure.take();
}

}  // namespace Platform::Posix
