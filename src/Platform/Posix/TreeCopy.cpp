#include "Platform/Posix/TreeCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Platform/Posix/FileCopy.h"
#include "Platform/Posix/FileError.h"
#include "Platform/Posix/FolderWalk.h"
#include "Platform/Posix/Moments.h"
#include "Platform/Posix/NativeFiles.h"

namespace Platform::Posix {

namespace {

constexpr mode_t kFolderBeingFilled = 0700;

class TreeCopy {
  public:
    TreeCopy(const CopyPlace& source, const CopyPlace& destination)
        : source_(source), destination_(destination), walk_(source.path) {}

    std::optional<Error> run();

  private:
    [[nodiscard]] int copyEntry(const char* name, const char* newName, unsigned char type);
    [[nodiscard]] int copyFolder(const char* name, const char* newName);
    [[nodiscard]] int endOfFolder();
    [[nodiscard]] int goOn(FolderEntry& entry);

    [[nodiscard]] int from() const { return walk_.depth() > 0 ? walk_.folder() : source_.parent; }
    [[nodiscard]] int to() const { return made_.depth() > 0 ? made_.top() : destination_.parent; }
    [[nodiscard]] Error errorFor(const char* name, int code) const;
    struct stat& folderStatus() {
        return folderStatus_[(walk_.depth() - 1) % FolderWalk::kHeld];
    }

    const CopyPlace& source_;
    const CopyPlace& destination_;
    FileCopy files_;
    FolderWalk walk_;
    FolderChain made_;
    /// The copy's own folder; it may lie inside the source for a moment when somebody moves it there.
    Identity copy_;
    /// What each held folder was like before it was read.
    std::array<struct stat, FolderWalk::kHeld> folderStatus_;
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

std::optional<Error> TreeCopy::run() {
    bool inside = false;
    int failure = liesIn(destination_.parent, source_.parent, source_.name, inside);
    if (failure == 0) {
        failure = inside ? EINVAL : copyEntry(source_.name.c_str(), destination_.name.c_str(), DT_UNKNOWN);
    }
    if (failure != 0) {
        return copyError(source_.path, destination_.path, failure);
    }
    while (walk_.depth() > 0) {
        FolderEntry entry;
        failure = goOn(entry);
        if (failure != 0) {
            return errorFor(entry.name, failure);
        }
    }
    return std::nullopt;
}

/// One step. On failure `entry` tells where, without a name for the folder at hand.
int TreeCopy::goOn(FolderEntry& entry) {
    const int result = walk_.next(entry);
    if (result > 0) {
        return copyEntry(entry.name, entry.name, entry.type);
    }
    return result < 0 ? errno : endOfFolder();
}

int TreeCopy::copyEntry(const char* name, const char* newName, unsigned char type) {
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

int TreeCopy::copyFolder(const char* name, const char* newName) {
    Descriptor folder;
    if (const int failure = openFolder(from(), name, folder); failure != 0) {
        return failure;
    }
    struct stat status {};
    if (::fstat(folder.get(), &status) != 0) {
        return errno;
    }
    const bool top = walk_.depth() == 0;
    if (!top && Identity{status.st_dev, status.st_ino} == copy_) {
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
        if (const int failure = identityOf(made.get(), copy_); failure != 0) {
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

int TreeCopy::endOfFolder() {
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

Error TreeCopy::errorFor(const char* name, int code) const {
    const std::string path = name != nullptr ? walk_.pathOf(name) : walk_.path();
    return copyError(path, destination_.path + path.substr(source_.path.size()), code);
}

}  // namespace

Error copyError(std::string_view source, std::string_view destination, int code) {
    std::string outcome = "copied to \"";
    outcome += destination;
    outcome += '"';
    return fileError(source, outcome, code);
}

std::optional<Error> copyTree(const CopyPlace& source, const CopyPlace& destination) {
    return TreeCopy(source, destination).run();
}

}  // namespace Platform::Posix
