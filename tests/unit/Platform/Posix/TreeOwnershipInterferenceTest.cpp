#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "Interfered.h"

namespace PlatformTests {
namespace {

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
    const Interference swap(Moment::givingOwner, "file", [this](int) {
        rename(path("top/file"), path("away"));
        ASSERT_EQ(::link(path("victim/file").c_str(), path("top/file").c_str()), 0);
    });
    giveTop(kSomebodyElse);
    EXPECT_EQ(swap.count(), 1);
    if (::geteuid() != 0) {
        // The other items cannot be given either, for another reason.
        std::erase_if(failures_, [](const auto& failure) { return failure.second == EPERM; });
    }
    EXPECT_EQ(failures_, (std::vector{std::pair{path("top/file"), EMLINK}}));
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

}  // namespace
}  // namespace PlatformTests
