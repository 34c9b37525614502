#include "Platform/Posix/TreeCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <mutex>
#include <utility>

#include "Platform/Posix/FileCopy.h"
#include "Platform/Posix/FileError.h"
#include "Platform/Posix/Moments.h"
#include "Platform/Posix/NativeFiles.h"
#include "Platform/Posix/TreeErrand.h"

namespace Platform::Posix {

namespace {

constexpr mode_t kFolderBeingFilled = 0700;

/// Each holds up to twice FolderChain::kHeld descriptors.
constexpr std::size_t kMostCopies = 4;

/// Shared by the errands of one copy.
struct Copying {
    Copying(const CopyPlace& from, const CopyPlace& to) : source(from), destination(to) {}

    const CopyPlace& source;
    const CopyPlace& destination;
    /// The copy's own folder; it may lie inside the source for a moment if somebody moves it there.
    Identity copy;
    std::mutex mutex;
    std::optional<Error> failure;
};

class CopyErrand : public TreeErrand {
  public:
    /// For the item itself.
    explicit CopyErrand(Copying& copying) : TreeErrand(copying.source.path), copying_(copying) {}
    CopyErrand(Copying& copying, Descriptor made, std::shared_ptr<Meeting> meeting)
        : TreeErrand({}, std::move(meeting)), copying_(copying) {
        made_.push(std::move(made));
    }

    /// Copies the item, or steps into it. Returns 0 or an errno value.
    [[nodiscard]] int begin() {
        return copyEntry(copying_.source.name.c_str(), copying_.destination.name.c_str(), DT_UNKNOWN);
    }

  private:
    void take(const FolderEntry& entry) override;
    void failListing(int code) override { fail(nullptr, code); }
    void endFolder(bool failedElsewhere) override;
    void end(FolderCrew& crew) override;
    std::unique_ptr<TreeErrand> newPart(std::size_t level, std::shared_ptr<Meeting> meeting) override;

    [[nodiscard]] int copyEntry(const char* name, const char* newName, unsigned char type);
    [[nodiscard]] int copyFolder(const char* name, const char* newName);
    [[nodiscard]] int finishFolder();
    void fail(const char* name, int code);

    [[nodiscard]] int from() const { return walk_.depth() > 0 ? walk_.folder() : copying_.source.parent; }
    [[nodiscard]] int to() const { return made_.depth() > 0 ? made_.top() : copying_.destination.parent; }
    struct stat& folderStatus() {
        return folderStatus_[(walk_.depth() - 1) % FolderWalk::kHeld];
    }

    Copying& copying_;
    FileCopy files_;
    FolderChain made_;
    /// The status of each held folder before it was read.
    std::array<struct stat, FolderWalk::kHeld> folderStatus_;
    /// Whether something failed here or in a part of it.
    bool failed_ = false;
    std::optional<Error> failure_;
};

unsigned char typeOf(const struct stat& status) {
    if (S_ISREG(status.st_mode)) {
        return DT_REG;
    }
    return S_ISDIR(status.st_mode) ? DT_DIR : DT_UNKNOWN;
}

/// Whether `folder` is the entry `name` of `parent`, or lies in it.
int liesIn(int folder, int parent, const std::string& name, bool& inside) {
    struct stat status {};
    inside = false;
    if (::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno;
    }
    const Identity tree{status.st_dev, status.st_ino};
    Descriptor current(openFolderForLookup(folder, "."));
    Identity previous;
    while (current) {
        Identity identity;
        if (const int failure = identityOf(current.get(), identity); failure != 0) {
            return failure;
        }
        inside = identity == tree;
        if (inside || identity == previous) {
            return 0;
        }
        previous = identity;
        current = Descriptor(openFolderForLookup(current.get(), ".."));
    }
    return errno;
}

std::unique_ptr<TreeErrand> CopyErrand::newPart(std::size_t level, std::shared_ptr<Meeting> meeting) {
    Descriptor made(::fcntl(made_.held(level), F_DUPFD_CLOEXEC, 0));
    return made ? std::make_unique<CopyErrand>(copying_, std::move(made), std::move(meeting)) : nullptr;
}

void CopyErrand::take(const FolderEntry& entry) {
    if (const int failure = copyEntry(entry.name, entry.name, entry.type); failure != 0) {
        fail(entry.name, failure);
    }
}

/// Ends the walk: `name` in the current folder, or the folder itself if null, could not be copied.
void CopyErrand::fail(const char* name, int code) {
    const std::string path = name != nullptr ? walk_.pathOf(name) : walk_.path();
    const std::string below = path.substr(copying_.source.path.size());
    failure_ = copyError(path, copying_.destination.path + below, code);
    failed_ = true;
    stop();
}

/// Of several failures the first one in the tree's order is kept: walks before it go on.
void CopyErrand::end(FolderCrew& crew) {
    if (failure_) {
        const std::lock_guard lock(copying_.mutex);
        crew.abandonBehind(*this);
        if (!isAbandoned()) {
            copying_.failure = std::move(failure_);
        }
    }
    if (isPart() && (failed_ || isAbandoned())) {
        meeting()->noteFailure();
    }
}

int CopyErrand::copyEntry(const char* name, const char* newName, unsigned char type) {
    struct stat status {};
    if (type != DT_REG && type != DT_DIR) {
        if (::fstatat(from(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return errno;
        }
        type = typeOf(status);
    }
    if (type == DT_DIR) {
        return copyFolder(name, newName);
    }
    if (type == DT_REG) {
        return files_.copyFile(from(), name, to(), newName);
    }
    return S_ISLNK(status.st_mode) ? files_.copyLink(from(), name, status, to(), newName)
                                   : files_.copySpecial(from(), name, status, to(), newName);
}

int CopyErrand::copyFolder(const char* name, const char* newName) {
    Descriptor folder;
    if (const int failure = openFolder(from(), name, folder); failure != 0) {
        return failure;
    }
    struct stat status {};
    if (::fstat(folder.get(), &status) != 0) {
        return errno;
    }
    const bool top = walk_.depth() == 0;
    if (!top && Identity{status.st_dev, status.st_ino} == copying_.copy) {
        return EINVAL;
    }
    if (::mkdirat(to(), newName, kFolderBeingFilled) != 0) {
        return errno;
    }
    atMoment(Moment::fillingFolder, to(), newName);
    Descriptor made;
    if (const int failure = openFolder(to(), newName, made); failure != 0) {
        return failure;
    }
    if (top) {
        if (const int failure = identityOf(made.get(), copying_.copy); failure != 0) {
            return failure;
        }
        walk_.enterTop(std::move(folder));
    } else {
        walk_.enter(std::move(folder), name);
    }
    made_.push(std::move(made));
    folderStatus() = status;
    return 0;
}

void CopyErrand::endFolder(bool failedElsewhere) {
    if (failedElsewhere) {
        failed_ = true;
        stop();
        return;
    }
    if (isPart() && walk_.depth() == 1) {
        stop();
        return;
    }
    if (const int failure = finishFolder(); failure != 0) {
        fail(nullptr, failure);
    }
}

int CopyErrand::finishFolder() {
    if (const int failure = files_.copyAttributes(walk_.folder(), folderStatus(), made_.top());
        failure != 0) {
        return failure;
    }
    Identity left;
    int failure = made_.pop(left);
    if (failure == 0) {
        failure = walk_.leave();
    }
    if (failure == 0 && walk_.depth() > 0 && !walk_.stayedOpen()) {
        failure = walk_.leftName() == nullptr ? ESTALE : 0;
        if (failure == 0 && ::fstat(walk_.folder(), &folderStatus()) != 0) {
            failure = errno;
        }
    }
    return failure;
}

}  // namespace

Error copyError(std::string_view source, std::string_view destination, int code) {
    std::string outcome = "copied to \"";
    outcome += destination;
    outcome += '"';
    return fileError(source, outcome, code);
}

std::optional<Error> copyTree(const CopyPlace& source, const CopyPlace& destination) {
    Copying copying(source, destination);
    auto errand = std::make_unique<CopyErrand>(copying);
    bool inside = false;
    int failure = liesIn(destination.parent, source.parent, source.name, inside);
    if (failure == 0) {
        failure = inside ? EINVAL : errand->begin();
    }
    if (failure != 0) {
        return copyError(source.path, destination.path, failure);
    }
    FolderCrew(kMostCopies).run(std::move(errand));
    return std::move(copying.failure);
}

}  // namespace Platform::Posix
