#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Interfered.h"
#include "Platform/Posix/FolderChain.h"

namespace PlatformTests {
namespace {

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

TEST_F(Removal, ReportsWhyItCannotClimbBackFromADeepFolder) {
    constexpr int kDepth = 2 * Platform::Posix::FolderChain::kHeld;
    ASSERT_NO_FATAL_FAILURE(makeDeepFolders(path("top/folder"), kDepth));
    giveToUnprivileged(path("top"));
    std::string folder = path("top/folder");
    for (int level = 0; level <= kDepth; ++level, folder += "/d") {
        giveToUnprivileged(folder);
    }
    const Interference shut(Moment::climbing, "..",
                            [](int at) { ASSERT_EQ(::fchmodat(at, "..", 0000, 0), 0); });
    const auto result = withoutPrivileges([this] {
        const auto error = files_.removeItem(url("top"));
        return error && error->code == EACCES ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
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

}  // namespace
}  // namespace PlatformTests
