// Set-id bits and hard links under a change of owner.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "NativeFiles.h"
#include "Platform/Posix/PosixFileManager.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

/// The folder is one that root alone can change (mode 0755), where names may be trusted, or one that others
/// can.
class ChangeOfOwner : public testing::TestWithParam<mode_t> {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only root can give items to others";
        }
        makeFolder(path("top"), GetParam());
    }
    [[nodiscard]] std::string path(std::string_view name) const { return scratch_.path(name); }
    void make(const std::string& name, uid_t owner, gid_t group, mode_t mode) {
        makeFile(path(name), "x");
        ASSERT_EQ(::chown(path(name).c_str(), owner, group), 0);
        ASSERT_EQ(::chmod(path(name).c_str(), mode), 0);
    }
    void giveTop(uid_t owner, gid_t group) {
        failures_.clear();
        files_.setOwnerOfContents(scratch_.url("top"), owner, group,
                                  [this](const Base::URL& item, int error) {
                                      failures_.emplace_back(item.lastPathComponent(), error);
                                  });
    }
    void expect(const std::string& name, uid_t owner, gid_t group, mode_t mode) {
        const struct stat status = statusOf(path(name));
        EXPECT_EQ(status.st_uid, owner) << name;
        EXPECT_EQ(status.st_gid, group) << name;
        EXPECT_EQ(status.st_mode & 07777, mode) << name;
    }

    Scratch scratch_;
    Platform::Posix::PosixFileManager files_;
    std::vector<std::pair<std::string, int>> failures_;
};

INSTANTIATE_TEST_SUITE_P(Folder, ChangeOfOwner, testing::Values(0755, 0775, 0757));

TEST_P(ChangeOfOwner, TakesSetIdBitsAway) {
    make("top/user", 1111, 1112, 04755);
    make("top/group", 1111, 1112, 02755);
    make("top/both", 1111, 1112, 06711);
    make("top/owner same", 2221, 1112, 06755);
    make("top/group same", 1111, 2222, 06755);
    make("top/lock", 1111, 1112, 02644);
    giveTop(2221, 2222);
    EXPECT_TRUE(failures_.empty());
    expect("top/user", 2221, 2222, 0755);
    expect("top/group", 2221, 2222, 0755);
    expect("top/both", 2221, 2222, 0711);
    expect("top/owner same", 2221, 2222, 0755);
    expect("top/group same", 2221, 2222, 0755);
    expect("top/lock", 2221, 2222, 0644);
    make("alone", 1111, 1112, 06755);
    EXPECT_EQ(files_.setOwner(scratch_.url("alone"), 2221, 2222), 0);
    expect("alone", 2221, 2222, 0755);
}

TEST_P(ChangeOfOwner, ToTheSameOwnerKeepsSetIdBits) {
    make("top/both", 2221, 2222, 06755);
    make("top/user", 2221, 2222, 04511);
    giveTop(2221, 2222);
    expect("top/both", 2221, 2222, 06755);
    expect("top/user", 2221, 2222, 04511);
    EXPECT_EQ(files_.setOwner(scratch_.url("top/both"), 2221, 2222), 0);
    expect("top/both", 2221, 2222, 06755);
}

TEST_P(ChangeOfOwner, KeepsEveryBitOfAFolder) {
    makeFolder(path("top/folder"));
    ASSERT_EQ(::chown(path("top/folder").c_str(), 1111, 1112), 0);
    ASSERT_EQ(::chmod(path("top/folder").c_str(), 07755), 0);
    giveTop(2221, 2222);
    expect("top/folder", 2221, 2222, 07755);
}

// As a copy of a root program goes: copyItem keeps the bits, and root's own copy keeps them.
TEST_P(ChangeOfOwner, ACopyOfRootsProgramKeepsItsSetIdBits) {
    make("top/program", 0, 0, 04755);
    ASSERT_FALSE(files_.copyItem(scratch_.url("top"), scratch_.url("copy")));
    EXPECT_EQ(files_.setOwner(scratch_.url("copy"), 0, 0), 0);
    files_.setOwnerOfContents(scratch_.url("copy"), 0, 0,
                              [](const Base::URL& item, int) { ADD_FAILURE() << item.path(); });
    expect("copy/program", 0, 0, 04755);
}

// Whoever may write to the folder may have linked anybody's file there.
TEST_P(ChangeOfOwner, RefusesAFileWithHardLinks) {
    make("victim", 1111, 1112, 06640);
    make("top/file", 1111, 1112, 0640);
    ASSERT_EQ(::link(path("victim").c_str(), path("top/linked").c_str()), 0);
    giveTop(2221, 2222);
    ASSERT_EQ(failures_.size(), 1U);
    EXPECT_EQ(failures_[0], (std::pair<std::string, int>{"linked", EMLINK}));
    expect("victim", 1111, 1112, 06640);
    expect("top/file", 2221, 2222, 0640);
    EXPECT_EQ(files_.setOwner(scratch_.url("top/linked"), 2221, 2222), EMLINK);
    EXPECT_EQ(files_.setOwner(scratch_.url("top/linked"), 1111, 2222), EMLINK);
    EXPECT_EQ(files_.setOwner(scratch_.url("top/linked"), 2221, 1112), EMLINK);
    expect("victim", 1111, 1112, 06640);
    // Nothing to change, nothing to fear.
    EXPECT_EQ(files_.setOwner(scratch_.url("top/linked"), 1111, 1112), 0);
    expect("victim", 1111, 1112, 06640);
    giveTop(1111, 1112);
    EXPECT_TRUE(failures_.empty());
    expect("victim", 1111, 1112, 06640);
}

TEST_P(ChangeOfOwner, TakesALinkWithAnotherNameForItself) {
    makeLink("nowhere", path("top/link"));
    ASSERT_EQ(::link(path("top/link").c_str(), path("top/same link").c_str()), 0);
    giveTop(2221, 2222);
    EXPECT_TRUE(failures_.empty());
    EXPECT_EQ(statusOf(path("top/link")).st_uid, 2221U);
}

}  // namespace
}  // namespace PlatformTests
