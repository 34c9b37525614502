#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Interfered.h"

namespace PlatformTests {
namespace {

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
