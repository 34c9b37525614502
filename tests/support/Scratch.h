#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Base/URL.h"
#include "support/WholeFile.h"

namespace PlatformTests {

/// A temporary folder below `base`, removed with everything in it at the end. Anybody may search it.
class Scratch {
  public:
    explicit Scratch(std::string base = usualBase());
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch();

    /// TMPDIR, or else a place in memory if there is one.
    [[nodiscard]] static std::string usualBase();
    /// Where the tests are run from: on a disk, normally.
    [[nodiscard]] static std::string currentFolder();

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }
    [[nodiscard]] Base::URL url(std::string_view name) const { return Base::URL::fileURL(path(name)); }

  private:
    std::string path_;
};

void makeFolder(const std::string& path, mode_t mode = 0755);
void makeFile(const std::string& path, std::string_view contents = "contents", mode_t mode = 0644);
void makeLink(const std::string& target, const std::string& path);

/// Makes `depth` folders called "d", one in the other, in the existing folder `top`, and a file called "leaf"
/// in the lowest one. Works for any depth.
void makeDeepFolders(const std::string& top, int depth);
/// How many folders called "d" lie one in the other below `top`, and whether the lowest one holds "leaf".
struct Depth {
    int folders = 0;
    bool leaf = false;
};
[[nodiscard]] Depth depthOf(const std::string& top);

[[nodiscard]] bool exists(const std::string& path);
/// lstat; fails the test if there is no such item.
[[nodiscard]] struct stat statusOf(const std::string& path);
using TestSupport::contentsOf;
[[nodiscard]] std::string targetOf(const std::string& path);
[[nodiscard]] int openDescriptors();

/// Runs `check` in a child process that has no privileges (as user and group 65534 if this one is root,
/// otherwise as this user) and returns its result; nothing if the child ended otherwise.
[[nodiscard]] std::optional<int> withoutPrivileges(const std::function<int()>& check);
/// Gives an item to the user of withoutPrivileges.
void giveToUnprivileged(const std::string& path);

}  // namespace PlatformTests
