#include "Platform/Posix/FolderChain.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Posix/FolderWalk.h"
#include "Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Posix::Descriptor;
using Platform::Posix::FolderChain;
using Platform::Posix::Identity;
using Platform::Posix::openFolder;

void goDown(FolderChain& chain, const std::string& top, int depth) {
    Descriptor folder;
    ASSERT_EQ(openFolder(AT_FDCWD, top.c_str(), folder), 0);
    chain.push(std::move(folder));
    for (int level = 0; level < depth; ++level) {
        ASSERT_EQ(openFolder(chain.top(), "d", folder), 0);
        chain.push(std::move(folder));
    }
}

/// Goes up to the top, returns the first failure.
int goUp(FolderChain& chain) {
    Identity left;
    int failure = 0;
    while (failure == 0 && chain.depth() > 1) {
        failure = chain.pop(left);
    }
    return failure;
}

class Depths : public testing::TestWithParam<int> {};

// On both sides of the number of folders held open, and of the number of remembered ones.
INSTANTIATE_TEST_SUITE_P(FolderChain, Depths, testing::Values(1, 15, 16, 17, 40, 1040, 1041, 2100));

TEST_P(Depths, ComesBackToTheTop) {
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    makeDeepFolders(scratch.path("top"), GetParam());
    FolderChain chain;
    goDown(chain, scratch.path("top"), GetParam());
    EXPECT_EQ(chain.depth(), static_cast<std::size_t>(GetParam()) + 1);
    ASSERT_EQ(goUp(chain), 0);
    const struct stat top = statusOf(scratch.path("top"));
    Identity identity;
    ASSERT_EQ(Platform::Posix::identityOf(chain.top(), identity), 0);
    EXPECT_EQ(identity, (Identity{top.st_dev, top.st_ino}));
    Identity left;
    EXPECT_EQ(chain.pop(left), 0);
    EXPECT_EQ(chain.depth(), 0U);
}

class MovedAway : public testing::TestWithParam<int> {};

// Remembered identities refuse the parameter 100, the way up to the top refuses 2100 as soon as they are used
// up.
INSTANTIATE_TEST_SUITE_P(FolderChain, MovedAway, testing::Values(100, 2100));

TEST_P(MovedAway, IsNoticedOnTheWayUp) {
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    makeFolder(scratch.path("elsewhere"));
    makeDeepFolders(scratch.path("top"), GetParam());
    FolderChain chain;
    const int before = openDescriptors();
    goDown(chain, scratch.path("top"), GetParam());
    EXPECT_LE(openDescriptors() - before, static_cast<int>(FolderChain::kHeld));
    ASSERT_EQ(::rename(scratch.path("top/d/d/d").c_str(), scratch.path("elsewhere/d").c_str()), 0);
    EXPECT_EQ(goUp(chain), ESTALE);
    EXPECT_EQ(chain.depth(), 0U);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(FolderChain, StaysAtTheFoldersItHoldsWhenOneIsMoved) {
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    makeFolder(scratch.path("elsewhere"));
    makeDeepFolders(scratch.path("top"), 8);
    FolderChain chain;
    goDown(chain, scratch.path("top"), 8);
    ASSERT_EQ(::rename(scratch.path("top/d/d").c_str(), scratch.path("elsewhere/d").c_str()), 0);
    ASSERT_EQ(goUp(chain), 0);
    const struct stat top = statusOf(scratch.path("top"));
    Identity identity;
    ASSERT_EQ(Platform::Posix::identityOf(chain.top(), identity), 0);
    EXPECT_EQ(identity, (Identity{top.st_dev, top.st_ino}));
}

TEST(FolderWalk, ShortensPathsThatAreVeryLong) {
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    Platform::Posix::FolderWalk walk(scratch.path("top"));
    Descriptor folder;
    ASSERT_EQ(openFolder(AT_FDCWD, scratch.path("top").c_str(), folder), 0);
    walk.enterTop(std::move(folder));
    const std::string name(250, 'n');
    constexpr int kDepth = 300;
    std::string whole = scratch.path("top");
    for (int level = 0; level < kDepth; ++level) {
        ASSERT_EQ(::mkdirat(walk.folder(), name.c_str(), 0700), 0);
        ASSERT_EQ(openFolder(walk.folder(), name.c_str(), folder), 0);
        walk.enter(std::move(folder), name.c_str());
        whole += "/" + name;
    }
    EXPECT_LT(walk.path().size(), std::size_t{1} << 16);
    EXPECT_EQ(whole.rfind(walk.path().substr(0, walk.path().size() - 4), 0), 0U);
    EXPECT_TRUE(walk.pathOf("x").ends_with("/.../x"));
    for (int level = 0; level < kDepth; ++level) {
        ASSERT_EQ(walk.leave(), 0);
        ASSERT_NE(walk.leftName(), nullptr);
        ASSERT_EQ(::unlinkat(walk.folder(), walk.leftName(), AT_REMOVEDIR), 0);
    }
    EXPECT_EQ(walk.path(), scratch.path("top"));
}

}  // namespace
}  // namespace PlatformTests
