#include "FolderAsRoot.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "support/FakeInspection.h"

namespace {

using Base::URL;
using Platform::ItemKind;

class FolderAsRoot : public testing::Test {
  protected:
    TestSupport::FakeFileFacts files;
    Inventory::FolderAsRoot folder{files, "/Volumes/Disk"};
    Platform::Error error;
};

TEST_F(FolderAsRoot, TakesEveryPathBelowTheFolder) {
    files.add("/Volumes/Disk/Library/a", ItemKind::file, 7);
    files.add("/Library/b");
    EXPECT_EQ(folder.look(URL::fileURL("/Library/a"), error)->bytes, 7U);
    EXPECT_FALSE(folder.look(URL::fileURL("/Library/b"), error));
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_EQ(folder.measure(URL::fileURL("/Library"), {}, [](const Platform::TreeSize&) {}),
              (Platform::TreeSize{1, 1, 0, 0, 7, 0}));
}

TEST_F(FolderAsRoot, DoesNotFollowALinkOnTheWay) {
    files.add("/Volumes/Disk/Library/x/y/a");
    files.add("/Volumes/Disk/Library/x", ItemKind::link);
    EXPECT_FALSE(folder.look(URL::fileURL("/Library/x/y/a"), error));
    EXPECT_EQ(error, (Platform::Error{"\"/Volumes/Disk/Library/x/y/a\" could not be looked at: "
                                      "\"/Volumes/Disk/Library/x\" is a link",
                                      ELOOP}));
    // A link itself is an item like any other.
    EXPECT_EQ(folder.look(URL::fileURL("/Library/x"), error)->kind, ItemKind::link);
}

TEST_F(FolderAsRoot, SaysWhyTheWayCannotBeLookedAt) {
    files.add("/Volumes/Disk/Library/x/a");
    files.failures["/Volumes/Disk/Library/x"] = {"x is closed", EACCES};
    EXPECT_FALSE(folder.look(URL::fileURL("/Library/x/a"), error));
    EXPECT_EQ(error, (Platform::Error{"x is closed", EACCES}));
}

}  // namespace
