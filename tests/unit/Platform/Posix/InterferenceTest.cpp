// Somebody swaps an item between two looks at it: each such moment, once, intentionally. (Races by the
// thousand run in tests/torture.)
#include "Interference.h"
#include "NativeFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "support/Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Posix::Moment;

void rename(const std::string& from, const std::string& to) {
    ASSERT_EQ(::rename(from.c_str(), to.c_str()), 0) << from << ": " << errno;
}

void addFile(int folder, const std::string& name) {
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
    void giveTop() {
        files_.setOwnerOfContents(
            url("top"), ::geteuid() == 0 ? 2222 : ::geteuid(), ::getegid(),
            [this](const Base::URL& item, int error) { failures_.emplace_back(item.path(), error); });
    }

    Scratch scratch_;
    NativeFileManager files_;
    uid_t owner_ = 0;
    std::vector<std::pair<std::string, int>> failures_;
};

using Removal = Interfered;

TEST_F(Removal, TakesALinkInAFoldersPlaceAsALink) {
    const Interference swap(Moment::openingFolder, "folder",
                            [this](int) { swapForLink("top/folder", "victim"); });
    EXPECT_EQ(removeTop(), 0);
    EXPECT_EQ(swap.count(), 1);
    EXPECT_FALSE(exists(path("top")));
    EXPECT_TRUE(exists(path("away/inside")));
}

TEST_F(Removal, TakesALinkInTheTopFoldersPlaceAsALink) {
    const Interference swap(Moment::openingFolder, "top", [this](int) { swapForLink("top", "victim"); });
    EXPECT_EQ(removeTop(), 0);
    EXPECT_EQ(swap.count(), 1);
    EXPECT_FALSE(exists(path("top")));
    EXPECT_TRUE(exists(path("away/folder/inside")));
}

TEST_F(Removal, MindsNoFolderThatHasGone) {
    const Interference swap(Moment::openingFolder, "folder",
                            [this](int) { rename(path("top/folder"), path("away")); });
    EXPECT_EQ(removeTop(), 0);
    EXPECT_EQ(swap.count(), 1);
    EXPECT_FALSE(exists(path("top")));
}

TEST_F(Removal, MindsNoFileThatHasGone) {
    const Interference swap(Moment::removing, "file",
                            [this](int) { rename(path("top/file"), path("away")); });
    EXPECT_EQ(removeTop(), 0);
    EXPECT_EQ(swap.count(), 1);
    EXPECT_FALSE(exists(path("top")));
}

TEST_F(Removal, EntersAFolderInAFilesPlace) {
    const Interference swap(Moment::removing, "file", [this](int) {
        rename(path("top/file"), path("away"));
        makeFolder(path("top/file"));
        makeFile(path("top/file/inside"));
    });
    EXPECT_EQ(removeTop(), 0);
    EXPECT_EQ(swap.count(), 1);
    EXPECT_FALSE(exists(path("top")));
}

TEST_F(Removal, TakesALinkInAFilesPlaceAsALink) {
    const Interference swap(Moment::removing, "file",
                            [this](int) { swapForLink("top/file", "victim/file"); });
    EXPECT_EQ(removeTop(), 0);
    EXPECT_EQ(swap.count(), 1);
    EXPECT_FALSE(exists(path("top")));
}

TEST_F(Removal, TakesALinkInAnEmptiedFoldersPlaceAsALink) {
    const Interference swap(Moment::removingFolder, "folder",
                            [this](int) { swapForLink("top/folder", "victim"); });
    EXPECT_EQ(removeTop(), 0);
    EXPECT_EQ(swap.count(), 1);
    EXPECT_FALSE(exists(path("top")));
}

TEST_F(Removal, MindsNoEmptiedFolderThatHasGone) {
    const Interference swap(Moment::removingFolder, "folder",
                            [this](int) { rename(path("top/folder"), path("away")); });
    EXPECT_EQ(removeTop(), 0);
    EXPECT_EQ(swap.count(), 1);
}

// A folder, then something else that cannot go: not for this time, and said so.
TEST_F(Removal, ReportsThatTheReplacementOfAFolderCannotBeRemoved) {
    giveToUnprivileged(path("top"));
    giveToUnprivileged(path("top/folder"));
    giveToUnprivileged(path("top/folder/inside"));
    const Interference swap(Moment::openingFolder, "folder", [this](int) {
        ASSERT_EQ(::unlink(path("top/folder/inside").c_str()), 0);
        ASSERT_EQ(::rmdir(path("top/folder").c_str()), 0);
        makeLink(path("victim"), path("top/folder"));
        ASSERT_EQ(::chmod(path("top").c_str(), 0500), 0);
    });
    const auto result = withoutPrivileges([this] {
        const auto error = files_.removeItem(url("top"));
        return error && error->code == EACCES ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
    EXPECT_EQ(targetOf(path("top/folder")), path("victim"));
}

TEST_F(Removal, RemovesWhatWasAddedMeanwhile) {
    const Interference add(Moment::removingFolder, "folder",
                           [this](int) { makeFile(path("top/folder/added")); });
    EXPECT_EQ(removeTop(), 0);
    EXPECT_EQ(add.count(), 1);
    EXPECT_FALSE(exists(path("top")));
}

TEST_F(Removal, GivesUpAFolderThatKeepsGrowingAfterThreePasses) {
    int number = 0;
    Interference add(Moment::removingFolder, "folder",
                     [&](int) { makeFile(path("top/folder/added " + std::to_string(++number))); });
    add.always();
    const auto error = files_.removeItem(url("top"));
    ASSERT_TRUE(error);
    EXPECT_EQ(*error,
              (Platform::Error{"\"" + path("top/folder") + "\" could not be removed: Directory not empty",
                               ENOTEMPTY}));
    EXPECT_EQ(add.count(), 3);
    EXPECT_FALSE(exists(path("top/file")));
    EXPECT_FALSE(exists(path("top/folder/added 2")));
    EXPECT_TRUE(exists(path("top/folder/added 3")));
}

TEST_F(Removal, GivesUpTheTopFolderToo) {
    Interference add(Moment::removingFolder, "top", [this](int) { makeFile(path("top/added")); });
    add.always();
    EXPECT_EQ(removeTop(), ENOTEMPTY);
    EXPECT_EQ(add.count(), 3);
}

// However many folders grow, 60 goes more are all there is for a tree.
TEST_F(Removal, IsBoundedForTheWholeTree) {
    constexpr int kFolders = 100;
    for (int number = 0; number < kFolders; ++number) {
        makeFolder(path("top/" + std::to_string(number)));
        makeFolder(path("top/" + std::to_string(number) + "/grows"));
    }
    Interference add(Moment::removingFolder, "grows", [](int parent) { addFile(parent, "grows/added"); });
    add.always();
    EXPECT_EQ(removeTop(), ENOTEMPTY);
    EXPECT_EQ(add.count(), kFolders + 60);
}

// The walk stands so deep that the folders above are closed; then its way is moved next to the victim's
// files.
TEST_F(Removal, DoesNotClimbOutOfTheTree) {
    constexpr int kDepth = 60;
    // The lowest 16 folders are held open: a folder moved further down is left as if it had not been moved.
    constexpr int kReopened = kDepth - 15;
    for (const int where : {0, 1, 20, kReopened - 1, kReopened, kDepth - 1}) {
        makeFolder(path("deep"));
        makeDeepFolders(path("deep"), kDepth);
        std::string moved = path("deep");
        for (int level = 0; level <= where; ++level) {
            moved += "/d";
        }
        const Interference move(Moment::removing, "leaf", [&](int) { rename(moved, path("victim/moved")); });
        const auto error = files_.removeItem(url("deep"));
        EXPECT_EQ(move.count(), 1);
        ASSERT_EQ(error.has_value(), where < kReopened) << where;
        EXPECT_EQ(error ? error->code : ESTALE, ESTALE) << where;
        for (const char* each : {"deep", "victim/moved"}) {
            if (exists(path(each))) {
                EXPECT_FALSE(files_.removeItem(url(each)));
            }
        }
    }
}

using Ownership = Interfered;

TEST_F(Ownership, ChangesALinkInAFoldersPlaceAsALink) {
    const Interference swap(Moment::givingOwner, "folder",
                            [this](int) { swapForLink("top/folder", "victim"); });
    giveTop();
    EXPECT_EQ(swap.count(), 1);
    EXPECT_TRUE(failures_.empty());
    EXPECT_EQ(statusOf(path("top/folder")).st_uid, statusOf(path("top/file")).st_uid);
}

TEST_F(Ownership, ChangesALinkInAFilesPlaceAsALink) {
    const Interference swap(Moment::givingOwner, "file",
                            [this](int) { swapForLink("top/file", "victim/file"); });
    giveTop();
    EXPECT_EQ(swap.count(), 1);
    EXPECT_TRUE(failures_.empty());
    EXPECT_EQ(statusOf(path("top/file")).st_uid, statusOf(path("top/folder")).st_uid);
}

// The opened item is given away, not the one that has its name now.
TEST_F(Ownership, ChangesNothingInTheOpenedFoldersPlace) {
    const Interference swap(Moment::givingOwner, "inside",
                            [this](int) { swapForLink("top/folder", "victim"); });
    giveTop();
    EXPECT_EQ(swap.count(), 1);
    EXPECT_TRUE(failures_.empty());
    EXPECT_EQ(statusOf(path("away/inside")).st_uid, statusOf(path("top/file")).st_uid);
}

TEST_F(Ownership, ReportsABadDescriptorForAVanishedItem) {
    const Interference swap(Moment::givingOwner, "file",
                            [this](int) { rename(path("top/file"), path("away")); });
    giveTop();
    ASSERT_EQ(failures_.size(), 1U);
    EXPECT_EQ(failures_[0], (std::pair{path("top/file"), EBADF}));
}

TEST_F(Ownership, RefusesAHardLinkInAFilesPlace) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give items to others";
    }
    const Interference swap(Moment::givingOwner, "file", [this](int) {
        rename(path("top/file"), path("away"));
        ASSERT_EQ(::link(path("victim/file").c_str(), path("top/file").c_str()), 0);
    });
    giveTop();
    EXPECT_EQ(swap.count(), 1);
    ASSERT_EQ(failures_.size(), 1U);
    EXPECT_EQ(failures_[0], (std::pair{path("top/file"), EMLINK}));
}

// The place that the walk would go on from lies elsewhere: said once, and no more is changed.
TEST_F(Ownership, EndsWhenItsWayWasMoved) {
    makeDeepFolders(path("top/folder"), 40);
    const Interference move(Moment::givingOwner, "leaf",
                            [this](int) { rename(path("top/folder/d/d"), path("victim/moved")); });
    giveTop();
    EXPECT_EQ(move.count(), 1);
    ASSERT_EQ(failures_.size(), 1U);
    EXPECT_EQ(failures_[0].second, ESTALE);
    EXPECT_FALSE(files_.removeItem(url("victim/moved")));
}

using Copy = Interfered;

TEST_F(Copy, ReadsNoFolderThroughALink) {
    const Interference swap(Moment::openingFolder, "folder",
                            [this](int) { swapForLink("top/folder", "victim"); });
    const auto error = files_.copyItem(url("top"), url("copy"));
    EXPECT_EQ(swap.count(), 1);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOTDIR);
    EXPECT_FALSE(exists(path("copy/folder")));
}

TEST_F(Copy, ReadsNoFileThroughALink) {
    const Interference swap(Moment::copying, "file", [this](int) { swapForLink("top/file", "victim/file"); });
    const auto error = files_.copyItem(url("top"), url("copy"));
    EXPECT_EQ(swap.count(), 1);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ELOOP);
    EXPECT_FALSE(exists(path("copy/file")));
}

TEST_F(Copy, DoesNotWaitForAFIFOInAFilesPlace) {
    const Interference swap(Moment::copying, "file", [this](int) {
        rename(path("top/file"), path("away"));
        ASSERT_EQ(::mkfifo(path("top/file").c_str(), 0600), 0);
    });
    const auto error = files_.copyItem(url("top"), url("copy"));
    EXPECT_EQ(swap.count(), 1);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOTSUP);
}

TEST_F(Copy, FillsNoFolderThroughALink) {
    const Interference swap(Moment::fillingFolder, "copy", [this](int) { swapForLink("copy", "victim"); });
    const auto error = files_.copyItem(url("top"), url("copy"));
    EXPECT_EQ(swap.count(), 1);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOTDIR);
}

// The copy's way was moved; it is not filled from where it lies now.
TEST_F(Copy, EndsWhenTheCopysWayWasMoved) {
    makeDeepFolders(path("top/folder"), 40);
    const Interference move(Moment::copying, "leaf",
                            [this](int) { rename(path("copy/folder/d"), path("victim/moved")); });
    const auto error = files_.copyItem(url("top/folder"), url("copy/folder"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT) << "the destination's parent is missing";
    makeFolder(path("copy"));
    EXPECT_EQ(files_.copyItem(url("top/folder"), url("copy/folder"))->code, ESTALE);
    EXPECT_EQ(move.count(), 1);
    EXPECT_FALSE(files_.removeItem(url("victim/moved")));
}

}  // namespace
}  // namespace PlatformTests
