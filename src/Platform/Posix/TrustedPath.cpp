#include "Platform/Posix/TrustedPath.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string_view>

#include "Platform/Posix/FileError.h"
#include "Platform/Posix/Moments.h"
#include "Platform/Posix/NativeFiles.h"

namespace Platform::Posix {

namespace {

constexpr int kMostLinks = 32;
constexpr mode_t kNewFolderMode = 0777;
constexpr uid_t kRoot = 0;

class Way {
  public:
    Way(std::string_view path, bool makeMissing)
        : ahead_(path), ownLength_(path.size()), makeMissing_(makeMissing) {}

    [[nodiscard]] WayEnd go(Descriptor& last);

  private:
    [[nodiscard]] int startAtRoot();
    [[nodiscard]] bool takeComponent(std::string& name);
    [[nodiscard]] int step(const std::string& name);
    [[nodiscard]] int stepUp();
    [[nodiscard]] int open(const std::string& name, Descriptor& folder) const;
    [[nodiscard]] int follow(const std::string& name);
    [[nodiscard]] int refuse(const std::string& link);

    std::string ahead_;
    /// The length of the path's own part of what lies ahead; the part before it comes from a link.
    std::size_t ownLength_;
    const bool makeMissing_;
    Descriptor folder_;
    /// The current folder, for messages.
    std::string where_;
    bool trusted_ = false;
    int linksLeft_ = kMostLinks;
    std::string lastLink_;
    std::string refusedLink_;
};

WayEnd Way::go(Descriptor& last) {
    int failure = startAtRoot();
    std::string name;
    while (failure == 0 && takeComponent(name)) {
        failure = name == ".." ? stepUp() : step(name);
    }
    last = std::move(folder_);
    return WayEnd{failure, refusedLink_};
}

int Way::startAtRoot() {
    folder_ = Descriptor(openFolderForLookup(AT_FDCWD, "/"));
    if (!folder_) {
        return errno;
    }
    where_.clear();
    trusted_ = onlyRootChanges(folder_.get());
    return 0;
}

/// Takes the next component off what lies ahead; "." does not count.
bool Way::takeComponent(std::string& name) {
    do {
        const std::size_t begin = ahead_.find_first_not_of('/');
        if (begin == std::string::npos) {
            return false;
        }
        const std::size_t end = std::min(ahead_.find('/', begin), ahead_.size());
        name = ahead_.substr(begin, end - begin);
        ahead_.erase(0, end);
    } while (name == ".");
    return true;
}

int Way::step(const std::string& name) {
    const bool own = ahead_.size() < ownLength_;
    Descriptor folder;
    int failure = open(name, folder);
    if (failure == ENOENT && makeMissing_ && own) {
        failure = ::mkdirat(folder_.get(), name.c_str(), kNewFolderMode) == 0 || errno == EEXIST
                      ? open(name, folder)
                      : errno;
    }
    if (failure == ENOTDIR || failure == ELOOP) {
        return follow(name);
    }
    if (failure == 0) {
        folder_ = std::move(folder);
        where_ += "/" + name;
        trusted_ = trusted_ && onlyRootChanges(folder_.get());
    }
    return failure;
}

int Way::open(const std::string& name, Descriptor& folder) const {
    atMoment(Moment::openingOnTheWay, folder_.get(), name.c_str());
    folder = Descriptor(openFolderForLookup(folder_.get(), name.c_str()));
    return folder ? 0 : errno;
}

/// Only a link's target has such a component. From a folder that root alone can move, the way up is the way
/// that was come.
int Way::stepUp() {
    if (!trusted_) {
        return refuse(lastLink_);
    }
    Descriptor above(openFolderForLookup(folder_.get(), ".."));
    if (!above) {
        return errno;
    }
    folder_ = std::move(above);
    where_.resize(where_.empty() ? 0 : where_.rfind('/'));
    return 0;
}

/// Puts the target of an expected link in front of what lies ahead.
int Way::follow(const std::string& name) {
    atMoment(Moment::readingLinkOnWay, folder_.get(), name.c_str());
    struct stat status {};
    if (::fstatat(folder_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno;
    }
    if (!S_ISLNK(status.st_mode)) {
        return ENOTDIR;
    }
    // A trusted item cannot change after this check: root alone could change it.
    if (!trusted_ || status.st_uid != kRoot) {
        return refuse(where_ + "/" + name);
    }
    if (linksLeft_-- == 0) {
        return ELOOP;
    }
    lastLink_ = where_ + "/" + name;
    std::array<char, PATH_MAX> target;
    const ssize_t length = ::readlinkat(folder_.get(), name.c_str(), target.data(), target.size());
    if (length <= 0) {
        return length == 0 ? ENOENT : errno;
    }
    ownLength_ = std::min(ownLength_, ahead_.size());
    ahead_.insert(0, std::string_view(target.data(), static_cast<std::size_t>(length)));
    return target[0] == '/' ? startAtRoot() : 0;
}

int Way::refuse(const std::string& link) {
    refusedLink_ = link;
    return ELOOP;
}

bool hasDots(std::string_view path) {
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view component = path.substr(begin, end - begin);
        if (component == "." || component == "..") {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

WayEnd goToParent(const Base::URL& item, bool makeMissing, OpenedParent& parent) {
    const std::string& path = item.path();
    if (hasDots(path)) {
        return WayEnd{EINVAL, {}};
    }
    const std::size_t slash = path.rfind('/');
    parent.name = path.substr(slash + 1);
    if (parent.name.empty()) {
        parent.name = ".";
    }
    return Way(std::string_view(path).substr(0, slash), makeMissing).go(parent.folder);
}

}  // namespace

bool onlyRootChanges(int folder) {
    struct stat status {};
    return ::fstat(folder, &status) == 0 && status.st_uid == kRoot &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0 && !listLetsOthersChange(folder);
}

WayEnd openParent(const Base::URL& item, OpenedParent& parent) {
    return goToParent(item, false, parent);
}

WayEnd makeParent(const Base::URL& item, OpenedParent& parent) {
    return goToParent(item, true, parent);
}

Error wayError(const Base::URL& item, std::string_view outcome, const WayEnd& end) {
    if (end.refusedLink.empty()) {
        return fileError(item.path(), outcome, end.code);
    }
    return fileError(
        item.path(), outcome,
        "\"" + end.refusedLink + "\" on the way to it is a link that root alone does not control", end.code);
}

}  // namespace Platform::Posix
