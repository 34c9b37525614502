#include "Platform/Posix/TreeOwnership.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "Platform/Posix/FileMode.h"
#include "Platform/Posix/FirstFailure.h"
#include "Platform/Posix/Moments.h"
#include "Platform/Posix/NativeFiles.h"
#include "Platform/Posix/SystemFolders.h"
#include "Platform/Posix/TreeErrand.h"
#include "Platform/Posix/TrustedPath.h"

namespace Platform::Posix {

namespace {

/// Each holds up to FolderChain::kHeld descriptors.
constexpr std::size_t kMostChanges = 8;

using Report = std::function<void(const Base::URL& item, int error)>;

bool mayBeFolder(const FolderEntry& entry) {
    return entry.type == DT_DIR || entry.type == DT_UNKNOWN;
}

bool isProgram(const struct stat& status) {
    return S_ISREG(status.st_mode) && (status.st_mode & kSetIdBits) != 0;
}

/// Changes the owner of an entry by name, in a folder that root alone can change. Returns 0, an errno value,
/// or kToBeOpened for an item that needs more than that.
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

struct Failure {
    std::string path;
    int code;
};

/// Shared by the errands of one change of ownership.
class Ownership {
  public:
    /// Fewer failures than this are kept and reported in order.
    static constexpr std::size_t kMostFailures = 256;

    Ownership(std::uint32_t newOwner, std::uint32_t newGroup) : owner(newOwner), group(newGroup) {}

    const std::uint32_t owner;
    const std::uint32_t group;

    /// False if there are too many.
    [[nodiscard]] bool note(std::string path, int code) {
        const std::lock_guard lock(mutex_);
        if (failures_.size() < kMostFailures) {
            failures_.push_back(Failure{std::move(path), code});
        }
        return failures_.size() < kMostFailures;
    }
    /// Valid when all errands have ended.
    [[nodiscard]] std::vector<Failure>& failures() { return failures_; }

  private:
    std::mutex mutex_;
    std::vector<Failure> failures_;
};

class OwnershipErrand : public TreeErrand {
  public:
    /// For the whole tree. Failures are reported as they occur if `failed` is given, and else noted.
    OwnershipErrand(Ownership& ownership, const std::string& path, Descriptor top, const Report* failed)
        : TreeErrand(path), ownership_(ownership), failed_(failed) {
        walk_.enterTop(std::move(top));
        shelter();
    }
    OwnershipErrand(const OwnershipErrand& whole, bool sheltered, std::shared_ptr<Meeting> meeting)
        : TreeErrand({}, std::move(meeting)), ownership_(whole.ownership_) {
        sheltered_[0] = sheltered;
    }

  private:
    void take(const FolderEntry& entry) override;
    void failListing(int /*code*/) override {}
    void endFolder(bool failedElsewhere) override;
    void end(FolderCrew& /*crew*/) override {}
    std::unique_ptr<TreeErrand> newPart(std::size_t level, std::shared_ptr<Meeting> meeting) override;

    [[nodiscard]] int give(const FolderEntry& entry, Descriptor& folder) const;
    void fail(std::string path, int code);
    [[nodiscard]] std::size_t here() const { return (walk_.depth() - 1) % FolderWalk::kHeld; }
    void shelter() { sheltered_[here()] = onlyRootChanges(walk_.folder()); }

    Ownership& ownership_;
    const Report* const failed_ = nullptr;
    /// For each held folder, whether root alone can change it.
    std::array<bool, FolderWalk::kHeld> sheltered_{};
};

std::unique_ptr<TreeErrand> OwnershipErrand::newPart(std::size_t level, std::shared_ptr<Meeting> meeting) {
    return std::make_unique<OwnershipErrand>(*this, sheltered_[level % FolderWalk::kHeld],
                                             std::move(meeting));
}

void OwnershipErrand::take(const FolderEntry& entry) {
    Descriptor folder;
    if (const int failure = give(entry, folder); failure != 0) {
        fail(walk_.pathOf(entry.name), failure);
    }
    if (folder) {
        walk_.enter(std::move(folder), entry.name);
        shelter();
    }
}

int OwnershipErrand::give(const FolderEntry& entry, Descriptor& folder) const {
    const int parent = walk_.folder();
    atMoment(Moment::givingOwner, parent, entry.name);
    const bool isFolder = mayBeFolder(entry) && openFolder(parent, entry.name, folder) == 0;
    if (!isFolder && sheltered_[here()]) {
        const int result = giveByName(parent, entry.name, ownership_.owner, ownership_.group);
        if (result != kToBeOpened) {
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
    return ::fstat(opened, &status) == 0 ? giveItem(opened, status, ownership_.owner, ownership_.group)
                                         : errno;
}

void OwnershipErrand::endFolder(bool /*failedElsewhere*/) {
    if (const int failure = walk_.leave(); failure != 0) {
        fail(walk_.path(), failure);
    }
    if (walk_.depth() > 0 && !walk_.stayedOpen()) {
        shelter();
    }
}

void OwnershipErrand::fail(std::string path, int code) {
    if (failed_ != nullptr) {
        (*failed_)(Base::URL::fileURL(path), code);
    } else if (!ownership_.note(std::move(path), code)) {
        stop();
    }
}

}  // namespace

int giveItem(int item, const struct stat& status, std::uint32_t owner, std::uint32_t group) {
    const bool changes = status.st_uid != owner || status.st_gid != group;
    if (changes && S_ISREG(status.st_mode) && status.st_nlink > 1) {
        return EMLINK;
    }
    const mode_t mode = status.st_mode & kModeBits;
    // Not even for a moment may a stranger's program exist that runs as its new owner.
    if (changes && isProgram(status) && setModeOfOpenItem(item, mode & ~kSetIdBits) != 0) {
        return errno;
    }
    if (setOwnerOfOpenItem(item, owner, group) != 0) {
        return errno;
    }
    // The system clears the bits as it changes the owner, even those that were set in between.
    const bool settled = !isProgram(status) && !changeOfOwnerKeepsSetIdBits();
    struct stat now {};
    if (!S_ISREG(status.st_mode) || settled || ::fstat(item, &now) != 0) {
        return 0;
    }
    // The old owner may have set the bits again in between; where the system clears them on a program that
    // keeps its owner, they are restored.
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
    Descriptor again(::fcntl(folder.get(), F_DUPFD_CLOEXEC, 0));
    Ownership ownership(owner, group);
    FolderCrew(kMostChanges)
        .run(std::make_unique<OwnershipErrand>(ownership, path, std::move(folder), nullptr));
    std::vector<Failure>& failures = ownership.failures();
    if (failures.size() == Ownership::kMostFailures && again) {
        // Too many to keep: this thread meets them again, one by one, in the tree's own order.
        FolderCrew(1).run(std::make_unique<OwnershipErrand>(ownership, path, std::move(again), &failed));
        return;
    }
    std::sort(failures.begin(), failures.end(),
              [](const Failure& one, const Failure& other) { return comesBefore(one.path, other.path); });
    for (const Failure& each : failures) {
        failed(Base::URL::fileURL(each.path), each.code);
    }
}

}  // namespace Platform::Posix
