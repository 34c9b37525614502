// The report on a tree in which several items resist.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "NativeFiles.h"
#include "Platform/Posix/PosixFileManager.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

/// Trees of an unprivileged user, who must not give anything away.
class ManyFailures : public testing::Test {
  protected:
    ManyFailures() { makeTheirFolder("top"); }

    [[nodiscard]] std::string path(std::string_view name) const { return scratch_.path(name); }
    void makeTheirFolder(const std::string& name) {
        makeFolder(path(name));
        giveToUnprivileged(path(name));
    }
    void makeFiles(const std::string& folder, int count) {
        for (int number = 0; number < count; ++number) {
            makeFile(path(folder + "/" + std::to_string(1000 + number)), "");
            giveToUnprivileged(path(folder + "/" + std::to_string(1000 + number)));
        }
    }
    /// The items that could not be given to root, as they are reported.
    [[nodiscard]] std::vector<std::string> failures() {
        std::vector<std::string> items;
        const std::thread::id own = std::this_thread::get_id();
        files_.setOwnerOfContents(scratch_.url("top"), 0, 0, [&](const Base::URL& item, int error) {
            EXPECT_EQ(error, EPERM);
            EXPECT_EQ(std::this_thread::get_id(), own);
            items.push_back(item.path());
        });
        return items;
    }

    Scratch scratch_;
    Platform::Posix::PosixFileManager files_;
};

TEST_F(ManyFailures, OfAChangeOfOwnerAreReportedInTheTreesOrder) {
    std::vector<std::string> expected;
    for (const std::string folder : {"a", "b", "c"}) {
        makeTheirFolder("top/" + folder);
        makeFiles("top/" + folder, 80);
        for (int number = 0; number < 80; ++number) {
            expected.push_back(path("top/" + folder + "/" + std::to_string(1000 + number)));
        }
        expected.push_back(path("top/" + folder));
    }
    EXPECT_EQ(withoutPrivileges([&] { return failures() == expected ? 0 : 1; }), std::optional(0));
}

// More than are kept.
TEST_F(ManyFailures, OfAChangeOfOwnerAreAllReportedOnce) {
    constexpr int kFiles = 700;
    for (const char* folder : {"top/a", "top/b"}) {
        makeTheirFolder(folder);
        makeFiles(folder, kFiles);
    }
    const auto result = withoutPrivileges([&] {
        std::vector<std::string> items = failures();
        std::sort(items.begin(), items.end());
        const bool each = std::adjacent_find(items.begin(), items.end()) == items.end();
        return each && items.size() == 2 * kFiles + 2 ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
}

TEST_F(ManyFailures, OfARemovalAreReportedAsTheFirstInTheTree) {
    const std::array folders{"top/a", "top/a/below", "top/b", "top/c"};
    for (const char* folder : folders) {
        makeTheirFolder(folder);
        makeFiles(folder, 300);
    }
    for (const char* folder : folders) {
        ASSERT_EQ(::chmod(path(folder).c_str(), 0555), 0);
    }
    const auto result = withoutPrivileges([&] {
        const auto error = files_.removeItem(scratch_.url("top"));
        return error && error->description ==
                            "\"" + path("top/a/1000") + "\" could not be removed: Permission denied"
                   ? 0
                   : 1;
    });
    EXPECT_EQ(result, std::optional(0));
    EXPECT_TRUE(exists(path("top/c/1299")));
}

/// The first file in the order of the listings that nobody may read.
std::string firstUnreadable(const std::string& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string path = entry.path();
        std::string found = entry.is_directory() ? firstUnreadable(path) : path;
        if (!found.empty() && (entry.is_directory() || (statusOf(path).st_mode & 07777) == 0)) {
            return found;
        }
    }
    return {};
}

TEST_F(ManyFailures, OfACopyAreReportedAsTheFirstThatIsListed) {
    for (const char* folder : {"top/a", "top/a/below", "top/b", "top/c", "top/d"}) {
        makeTheirFolder(folder);
        makeFiles(folder, 200);
        ASSERT_EQ(::chmod(path(std::string(folder) + "/1100").c_str(), 0), 0);
    }
    makeTheirFolder("theirs");
    const std::string expected = firstUnreadable(path("top"));
    ASSERT_FALSE(expected.empty());
    const auto result = withoutPrivileges([&] {
        const auto error = files_.copyItem(scratch_.url("top"), scratch_.url("theirs/copy"));
        return error && error->description.starts_with("\"" + expected + "\" could not be copied to") ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
    EXPECT_EQ(statusOf(path("theirs/copy")).st_mode & 07777, 0700U) << "not finished";
}

}  // namespace
}  // namespace PlatformTests
