// The facts about files that both systems give alike.

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Posix/PosixFileFacts.h"
#include "support/Scratch.h"

namespace {

using Platform::ItemIdentity;
using Platform::ItemKind;
using Platform::TreeSize;
using PlatformTests::makeFile;
using PlatformTests::makeFolder;
using PlatformTests::makeLink;
using PlatformTests::Scratch;

class FileFacts : public testing::Test {
  protected:
    Platform::ItemFacts look(const std::string& name) {
        const auto found = facts.look(scratch.url(name), error);
        EXPECT_TRUE(found) << name;
        return found.value_or(Platform::ItemFacts{});
    }
    TreeSize measure(const std::string& name, const std::vector<ItemIdentity>& without = {}) {
        return facts.measure(scratch.url(name), without, [](const TreeSize&) {});
    }

    Scratch scratch;
    Platform::Posix::PosixFileFacts facts;
    Platform::Error error;
};

TEST_F(FileFacts, TellWhatAnItemIs) {
    makeFile(scratch.path("file"), "12345");
    makeFolder(scratch.path("folder"));
    makeLink("file", scratch.path("link"));
    ASSERT_EQ(::mkfifo(scratch.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(look("file").kind, ItemKind::file);
    EXPECT_EQ(look("file").bytes, 5U);
    EXPECT_EQ(look("folder").kind, ItemKind::folder);
    EXPECT_EQ(look("link").kind, ItemKind::link);
    EXPECT_EQ(look("pipe").kind, ItemKind::other);
}

TEST_F(FileFacts, GiveOneIdentityToOneItem) {
    makeFile(scratch.path("a"));
    makeFile(scratch.path("b"));
    ASSERT_EQ(::link(scratch.path("a").c_str(), scratch.path("c").c_str()), 0);
    const struct stat status = PlatformTests::statusOf(scratch.path("a"));
    EXPECT_EQ(look("a").identity, (ItemIdentity{status.st_dev, status.st_ino}));
    EXPECT_EQ(look("a").identity, look("c").identity);
    EXPECT_NE(look("a").identity, look("b").identity);
}

TEST_F(FileFacts, SayWhyThereIsNoItem) {
    makeFile(scratch.path("file"));
    EXPECT_FALSE(facts.look(scratch.url("none"), error));
    EXPECT_EQ(error, (Platform::Error{
                         "\"" + scratch.path("none") + "\" could not be looked at: No such file or directory",
                         ENOENT}));
    EXPECT_FALSE(facts.look(scratch.url("file/none"), error));
    EXPECT_EQ(error.code, ENOTDIR);
}

TEST_F(FileFacts, CountATree) {
    makeFolder(scratch.path("top"));
    for (int folder = 0; folder < 20; ++folder) {
        const std::string path = scratch.path("top/" + std::to_string(folder));
        makeFolder(path);
        makeFolder(path + "/inner");
        makeFile(path + "/a", "123");
        makeFile(path + "/inner/b", "4567");
    }
    makeLink("/", scratch.path("top/link"));
    ASSERT_EQ(::mkfifo(scratch.path("top/pipe").c_str(), 0600), 0);
    EXPECT_EQ(measure("top"), (TreeSize{40, 41, 1, 1, 140, 0}));
}

TEST_F(FileFacts, CountAnItemThatIsNotAFolderAsItself) {
    makeFolder(scratch.path("folder"));
    makeFile(scratch.path("folder/inside"));
    makeFile(scratch.path("file"), "12345");
    makeLink("folder", scratch.path("link"));
    EXPECT_EQ(measure("file"), (TreeSize{1, 0, 0, 0, 5, 0}));
    EXPECT_EQ(measure("link"), (TreeSize{0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(measure("none"), TreeSize{});
}

TEST_F(FileFacts, LeaveItemsOut) {
    makeFolder(scratch.path("top"));
    makeFolder(scratch.path("top/in"));
    makeFolder(scratch.path("top/in/out"));
    makeFile(scratch.path("top/in/out/a"), "1");
    makeFile(scratch.path("top/in/b"), "22");
    EXPECT_EQ(measure("top", {look("top/in/out").identity}), (TreeSize{1, 2, 0, 0, 2, 0}));
    EXPECT_EQ(measure("top", {look("top/in/b").identity}), (TreeSize{1, 3, 0, 0, 1, 0}));
    EXPECT_EQ(measure("top", {look("top").identity}), TreeSize{});
}

TEST_F(FileFacts, SayHowMuchCouldNotBeCounted) {
    makeFolder(scratch.path("top"));
    makeFolder(scratch.path("top/closed"));
    makeFile(scratch.path("top/closed/a"), "1");
    ASSERT_EQ(::chmod(scratch.path("top/closed").c_str(), 0), 0);
    const auto unread = PlatformTests::withoutPrivileges([this] {
        const TreeSize size = measure("top");
        return size == TreeSize{0, 2, 0, 0, 0, 1} ? 1 : 0;
    });
    EXPECT_EQ(unread, 1);
    ::chmod(scratch.path("top/closed").c_str(), 0755);
}

TEST_F(FileFacts, AddUp) {
    TreeSize sum{1, 2, 3, 4, 5, 6};
    sum += TreeSize{10, 20, 30, 40, 50, 60};
    EXPECT_EQ(sum, (TreeSize{11, 22, 33, 44, 55, 66}));
}

}  // namespace
