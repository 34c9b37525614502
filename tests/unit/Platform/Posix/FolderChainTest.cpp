#include "Platform/Posix/FolderChain.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ostream>

#include "Interference.h"
#include "Platform/Posix/FolderWalk.h"
#include "support/Scratch.h"

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
INSTANTIATE_TEST_SUITE_P(FolderChain, Depths,
                         testing::Values(1, 15, 16, 17, 40, 1040, 1041, 2100, 16'400, 17'000));

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

/// How deep the walk stands, and the level whose folder is moved away then.
struct Move {
    int depth;
    int level;

    friend void PrintTo(const Move& move, std::ostream* out) {
        *out << "Level" << move.level << "Of" << move.depth;
    }
};

class MovedAway : public testing::TestWithParam<Move> {};

// Remembered identities refuse the first three. The others are met when those are used up: right at a
// checkpoint, before it, behind it, and with checkpoints that are twice as far apart.
INSTANTIATE_TEST_SUITE_P(FolderChain, MovedAway,
                         testing::Values(Move{100, 1}, Move{100, 64}, Move{100, 84}, Move{2100, 1},
                                         Move{2100, 63}, Move{2100, 64}, Move{2100, 65}, Move{2100, 128},
                                         Move{17'000, 64}, Move{17'000, 128}, Move{17'000, 129}));

TEST_P(MovedAway, IsNoticedOnTheWayUp) {
    const auto [depth, level] = GetParam();
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    makeFolder(scratch.path("elsewhere"));
    makeDeepFolders(scratch.path("top"), depth);
    FolderChain chain;
    const int before = openDescriptors();
    goDown(chain, scratch.path("top"), depth);
    EXPECT_LE(openDescriptors() - before, static_cast<int>(FolderChain::kHeld));
    std::string moved = scratch.path("top");
    for (int each = 0; each < level; ++each) {
        moved += "/d";
    }
    ASSERT_EQ(::rename(moved.c_str(), scratch.path("elsewhere/d").c_str()), 0);
    EXPECT_EQ(goUp(chain), ESTALE);
    EXPECT_EQ(chain.depth(), 0U);
    EXPECT_EQ(openDescriptors(), before);
}

// A folder with as many folders below it as the one that was moved is not taken for it.
TEST(FolderChain, DoesNotTakeAnotherFolderOfTheSameDepthForTheOneThatWasMoved) {
    for (const char* where : {"/d", "/d/d/d"}) {
        const Scratch scratch;
        makeFolder(scratch.path("top"));
        makeDeepFolders(scratch.path("top"), 2100);
        FolderChain chain;
        goDown(chain, scratch.path("top"), 2100);
        const std::string place = scratch.path("top") + where;
        ASSERT_EQ(::rename((place + "/d").c_str(), scratch.path("moved").c_str()), 0);
        ASSERT_EQ(::rename(place.c_str(), scratch.path("original").c_str()), 0);
        makeFolder(place);
        ASSERT_EQ(::rename(scratch.path("moved").c_str(), (place + "/d").c_str()), 0);
        // Still inside the tree: a stranger between two checkpoints is one of the tree's folders now.
        EXPECT_EQ(goUp(chain), 0) << where;
    }
}

// Linear: no level is climbed more than twice.
TEST(FolderChain, ClimbsEachLevelTwiceAtMost) {
    for (const int depth : {3000, 9000, 18'000}) {
        const Scratch scratch;
        makeFolder(scratch.path("top"));
        makeDeepFolders(scratch.path("top"), depth);
        FolderChain chain;
        goDown(chain, scratch.path("top"), depth);
        Interference climb(Platform::Posix::Moment::climbing, "..", [](int) {});
        climb.always();
        ASSERT_EQ(goUp(chain), 0);
        EXPECT_GE(climb.count(), depth - static_cast<int>(FolderChain::kHeld));
        EXPECT_LE(climb.count(), 2 * depth);
    }
}

// Down, up and down again, over the same levels.
TEST(FolderChain, KnowsItsWayAfterComingBack) {
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    makeDeepFolders(scratch.path("top"), 3000);
    FolderChain chain;
    goDown(chain, scratch.path("top"), 3000);
    Identity left;
    Descriptor folder;
    for (const int level : {2000, 1500, 64, 63, 1}) {
        while (chain.depth() > static_cast<std::size_t>(level)) {
            ASSERT_EQ(chain.pop(left), 0);
        }
        for (int each = 0; each < 40; ++each) {
            ASSERT_EQ(openFolder(chain.top(), "d", folder), 0);
            chain.push(std::move(folder));
        }
    }
    EXPECT_EQ(goUp(chain), 0);
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

// On a layered file system a listing and a folder's status may differ in the number of its inode; here the
// folder is a mount point, or was moved away.
TEST(FolderWalk, SaysThatAFolderHasGoneFromItsPlace) {
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    makeDeepFolders(scratch.path("top"), 30);
    Platform::Posix::FolderWalk walk(scratch.path("top"));
    Descriptor folder;
    ASSERT_EQ(openFolder(AT_FDCWD, scratch.path("top").c_str(), folder), 0);
    walk.enterTop(std::move(folder));
    for (int level = 0; level < 30; ++level) {
        ASSERT_EQ(openFolder(walk.folder(), "d", folder), 0);
        walk.enter(std::move(folder), "d");
    }
    int named = 0;
    while (walk.depth() > 3) {
        ASSERT_EQ(walk.leave(), 0);
        ASSERT_NE(walk.leftName(), nullptr);
        EXPECT_STREQ(walk.leftName(), "d");
        ++named;
    }
    EXPECT_EQ(named, 28);
    // Its name is taken by another folder, and it lies beside that one.
    ASSERT_EQ(::rename(scratch.path("top/d/d").c_str(), scratch.path("top/d/x").c_str()), 0);
    makeFolder(scratch.path("top/d/d"));
    ASSERT_EQ(walk.leave(), 0);
    ASSERT_NE(walk.leftName(), nullptr);
    EXPECT_STREQ(walk.leftName(), "x");
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
