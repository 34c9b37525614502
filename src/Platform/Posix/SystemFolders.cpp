#include "Platform/Posix/SystemFolders.h"

#include <fcntl.h>
#include <pwd.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Posix/FolderChain.h"

namespace Platform::Posix {

namespace {

constexpr std::array<std::string_view, 27> kFolders = {
    "/Applications",
    "/Library",
    "/Library/Application Support",
    "/Library/Extensions",
    "/Library/LaunchAgents",
    "/Library/LaunchDaemons",
    "/Library/PrivilegedHelperTools",
    "/Library/Services",
    "/System",
    // The real location, since macOS 10.15, of the folders that users and products fill.
    "/System/Volumes/Data",
    "/Users",
    "/Users/Shared",
    "/Volumes",
    "/bin",
    "/etc",
    "/opt",
    "/private",
    "/private/etc",
    "/private/tmp",
    "/private/var",
    "/sbin",
    "/tmp",
    "/usr",
    "/usr/lib",
    "/usr/local",
    "/usr/share",
    "/var",
};

Identity identityIn(const struct stat& status) {
    return Identity{status.st_dev, status.st_ino};
}

/// Compares one item with folders and the folders above them. Looks at each of them once, because most of
/// them lie in one another.
class Comparison {
  public:
    explicit Comparison(const struct stat& item) : item_(identityIn(item)) {}

    /// Whether the item is the folder at `path`, or one that it lies in, or a link that leads there.
    [[nodiscard]] bool holdsFor(const std::string& path);

  private:
    struct Look {
        Identity identity;
        bool isThere = false;
        bool isLink = false;
    };

    [[nodiscard]] Look lookAt(const std::string& path);
    [[nodiscard]] bool isAbove(const std::string& path);

    const Identity item_;
    std::map<std::string, Look> looks_;
    /// The folders that have been compared, with all above them.
    std::vector<Identity> seen_;
};

/// As the path is spelled. Without a link on the way the folders really lie in one another as they are
/// spelled; with one, the way up is another.
bool Comparison::holdsFor(const std::string& path) {
    bool hasLink = false;
    for (std::size_t end = 0; end != std::string::npos;) {
        end = path.find('/', end + 1);
        const Look look = lookAt(path.substr(0, end));
        if (!look.isThere) {
            return false;
        }
        if (look.identity == item_) {
            return true;
        }
        hasLink = hasLink || look.isLink;
    }
    return hasLink && isAbove(path);
}

Comparison::Look Comparison::lookAt(const std::string& path) {
    const auto [place, isNew] = looks_.try_emplace(path);
    Look& look = place->second;
    struct stat status {};
    if (isNew && ::lstat(path.c_str(), &status) == 0) {
        look = {identityIn(status), true, S_ISLNK(status.st_mode)};
    }
    return look;
}

/// As the folders really lie in one another.
bool Comparison::isAbove(const std::string& path) {
    Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    Identity identity;
    while (folder && identityOf(folder.get(), identity) == 0 &&
           std::find(seen_.begin(), seen_.end(), identity) == seen_.end()) {
        if (identity == item_) {
            return true;
        }
        seen_.push_back(identity);
        folder = Descriptor(::openat(folder.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    return false;
}

bool isHome(Comparison& comparison) {
    bool found = false;
    ::setpwent();
    while (const passwd* entry = found ? nullptr : ::getpwent()) {
        found = entry->pw_dir != nullptr && entry->pw_dir[0] == '/' && comparison.holdsFor(entry->pw_dir);
    }
    ::endpwent();
    return found;
}

}  // namespace

bool isSystemFolder(const struct stat& item) {
    if (!S_ISDIR(item.st_mode) && !S_ISLNK(item.st_mode)) {
        return false;
    }
    Comparison comparison(item);
    return comparison.holdsFor("/") ||
           std::any_of(kFolders.begin(), kFolders.end(),
                       [&](std::string_view each) { return comparison.holdsFor(std::string(each)); }) ||
           isHome(comparison);
}

}  // namespace Platform::Posix
