#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Interference.h"
#include "NativeFiles.h"
#include "Platform/Posix/PosixFileManager.h"
#include "support/Scratch.h"

/// Somebody swaps an item between two looks at it: each such moment, once, intentionally. (Races by the
/// thousand run in tests/torture.)
namespace PlatformTests {

using Platform::Posix::Moment;

inline void rename(const std::string& from, const std::string& to) {
    ASSERT_EQ(::rename(from.c_str(), to.c_str()), 0) << from << ": " << errno;
}

inline void addFile(int folder, const std::string& name) {
    const int file = ::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(file, 0) << errno;
    ::close(file);
}

/// A tree with a folder and a file, and a victim beside it that nothing may happen to.
class Interfered : public testing::Test {
  protected:
    Interfered() {
        makeFolder(path("top"));
        makeFolder(path("top/folder"));
        makeFile(path("top/folder/inside"));
        makeFile(path("top/file"), "of the tree");
        makeFolder(path("victim"));
        makeFolder(path("victim/folder"));
        makeFile(path("victim/file"), "victim's", 0600);
        makeFile(path("victim/inside"), "victim's", 0600);
        owner_ = ::geteuid() == 0 ? 1111 : ::geteuid();
        for (const char* each : {"victim", "victim/folder", "victim/file", "victim/inside"}) {
            EXPECT_EQ(::lchown(path(each).c_str(), owner_, static_cast<gid_t>(-1)), 0);
        }
    }
    ~Interfered() override {
        for (const char* each : {"victim", "victim/folder", "victim/file", "victim/inside"}) {
            EXPECT_EQ(statusOf(path(each)).st_uid, owner_) << each;
        }
        EXPECT_EQ(contentsOf(path("victim/file")), "victim's");
        EXPECT_EQ(contentsOf(path("victim/inside")), "victim's");
        EXPECT_FALSE(exists(path("victim/new")));
    }

    [[nodiscard]] std::string path(std::string_view name) const { return scratch_.path(name); }
    [[nodiscard]] Base::URL url(std::string_view name) const { return scratch_.url(name); }
    /// Puts a link to the victim where an item was, which stays beside it.
    void swapForLink(const std::string& item, const std::string& target) {
        rename(path(item), path("away"));
        makeLink(path(target), path(item));
    }
    [[nodiscard]] int removeTop() {
        const auto error = files_.removeItem(url("top"));
        return error ? error->code : 0;
    }
    static constexpr uid_t kSomebodyElse = 2222;

    /// To somebody else or, where that is not permitted, to the owner.
    void giveTop() { giveTop(::geteuid() == 0 ? kSomebodyElse : ::geteuid()); }
    void giveTop(uid_t owner) {
        files_.setOwnerOfContents(url("top"), owner, ::getegid(), [this](const Base::URL& item, int error) {
            failures_.emplace_back(item.path(), error);
        });
    }

    Scratch scratch_;
    Platform::Posix::PosixFileManager files_;
    uid_t owner_ = 0;
    std::vector<std::pair<std::string, int>> failures_;
};

}  // namespace PlatformTests
