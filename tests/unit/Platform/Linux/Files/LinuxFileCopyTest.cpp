// Copies while a system call fails, as it would on a bad or full disk: the kernel is told to refuse it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "NativeFiles.h"
#include "Platform/Posix/PosixFileManager.h"
#include "Posix/OwnRoot.h"
#include "support/Scratch.h"
#include "support/SystemCalls.h"

namespace PlatformTests {
namespace {

constexpr std::size_t kLarge = 1 << 20;

/// What is copied while which call fails, and how.
struct Failure {
    const char* item;
    long call;
    int code;
};

class CopyWhileACallFails : public testing::Test {
  protected:
    CopyWhileACallFails() {
        makeFile(scratch_.path("file"), "contents", 0777);
        makeFile(scratch_.path("large"), std::string(kLarge, 'x'));
        makeFile(scratch_.path("sparse"), "begin");
        EXPECT_EQ(::truncate(scratch_.path("sparse").c_str(), kLarge), 0);
        makeLink("file", scratch_.path("link"));
        EXPECT_EQ(::mkfifo(scratch_.path("fifo").c_str(), 0640), 0);
        makeFolder(scratch_.path("folder"));
        makeFile(scratch_.path("folder/inside"));
    }

    /// The code of the copy's error, 0 if it succeeds; no file is cloned meanwhile.
    [[nodiscard]] int codeOf(const Failure& failure, const std::string& copy) {
        // Takes bits from the copy's first mode.
        const mode_t mask = ::umask(022);
        std::optional<Platform::Error> error;
        askAboutEachCall(
            [&](long call) {
                return call == failure.call ? failure.code : call == SYS_ioctl ? EOPNOTSUPP : 0;
            },
            [&] { error = files_.copyItem(scratch_.url(failure.item), scratch_.url(copy)); });
        ::umask(mask);
        return error ? static_cast<int>(error->code) : 0;
    }

    Scratch scratch_;
    Platform::Posix::PosixFileManager files_;
};

TEST_F(CopyWhileACallFails, ReportsTheFailure) {
    const std::initializer_list<Failure> failures{
        {"file", SYS_pread64, EIO},
        {"file", SYS_write, ENOSPC},
        {"file", SYS_fchmod, EIO},
        {"file", SYS_utimensat, EIO},
        {"file", SYS_flistxattr, EIO},
        {"large", SYS_lseek, EIO},
        {"large", SYS_copy_file_range, ENOSPC},
        {"large", SYS_copy_file_range, EIO},
        {"large", SYS_copy_file_range, EDQUOT},
        {"large", SYS_copy_file_range, EFBIG},
        {"sparse", SYS_ftruncate, EIO},
        {"link", SYS_readlinkat, EIO},
        {"link", SYS_symlinkat, EIO},
        {"link", SYS_fchownat, EIO},
        {"link", SYS_llistxattr, EIO},
        {"link", SYS_utimensat, EIO},
        {"fifo", SYS_mknodat, EIO},
        {"fifo", kChangeModeCall, EIO},
        {"fifo", SYS_fchownat, EIO},
        {"fifo", SYS_llistxattr, EIO},
        {"fifo", SYS_utimensat, EIO},
        {"folder", SYS_mkdirat, ENOSPC},
        {"folder", SYS_getdents64, EIO},
        {"folder", SYS_utimensat, EIO},
    };
    int number = 0;
    for (const Failure& failure : failures) {
        SCOPED_TRACE(std::string(failure.item) + ", call " + std::to_string(failure.call));
        EXPECT_EQ(codeOf(failure, "copy " + std::to_string(++number)), failure.code);
    }
}

TEST_F(CopyWhileACallFails, DoesWithoutWhatAFileSystemMayNotHave) {
    const std::initializer_list<Failure> failures{
        {"large", SYS_copy_file_range, EXDEV}, {"large", SYS_copy_file_range, EOPNOTSUPP},
        {"link", SYS_fchownat, EPERM},         {"link", SYS_fchownat, EINVAL},
        {"file", SYS_flistxattr, EOPNOTSUPP},
    };
    int number = 0;
    for (const Failure& failure : failures) {
        SCOPED_TRACE(std::string(failure.item) + ", call " + std::to_string(failure.call));
        const std::string copy = "copy " + std::to_string(++number);
        EXPECT_EQ(codeOf(failure, copy), 0);
        EXPECT_TRUE(contentsOf(scratch_.path(copy)) == contentsOf(scratch_.path(failure.item)));
    }
}

TEST_F(CopyWhileACallFails, KeepsModesUnderAKernelThatSetsThemByNameAlone) {
    ASSERT_EQ(::chmod(scratch_.path("fifo").c_str(), 0604), 0);
    EXPECT_EQ(codeOf({"fifo", kChangeModeCall, ENOSYS}, "copy"), 0);
    EXPECT_EQ(statusOf(scratch_.path("copy")).st_mode, statusOf(scratch_.path("fifo")).st_mode);
}

/// What a test learns of a copy at each call of one kind that makes it.
class CopyInTheMaking : public testing::Test {
  protected:
    void copyAnd(const std::string& source, long call, const std::function<void()>& look) {
        const mode_t mask = ::umask(0);
        std::optional<Platform::Error> error;
        askAboutEachCall(
            [&](long each) {
                if (each == call) {
                    look();
                }
                return each == SYS_ioctl ? EOPNOTSUPP : 0;
            },
            [&] { error = files_.copyItem(Base::URL::fileURL(source), scratch_.url("copy")); });
        ::umask(mask);
        EXPECT_FALSE(error) << error->description;
    }

    Scratch scratch_;
    Platform::Posix::PosixFileManager files_;
};

TEST_F(CopyInTheMaking, OfAnOwnFileHasItsModeFromTheBeginning) {
    for (const mode_t mode : {0755, 0640, 0766}) {
        makeFile(scratch_.path("file"), "contents", mode);
        bool changesMode = false;
        copyAnd(scratch_.path("file"), SYS_fchmod, [&] { changesMode = true; });
        EXPECT_FALSE(changesMode) << mode;
        EXPECT_EQ(statusOf(scratch_.path("copy")).st_mode, S_IFREG | mode);
        ASSERT_EQ(::unlink(scratch_.path("copy").c_str()), 0);
    }
}

TEST_F(CopyInTheMaking, OfSomebodyElsesFileIsForItsMakerAlone) {
    // To others than root, root's files are somebody else's.
    std::string theirs = "/etc/passwd";
    if (::geteuid() == 0) {
        theirs = scratch_.path("theirs");
        makeFile(theirs, "contents", 0644);
        ASSERT_EQ(::chown(theirs.c_str(), kAlice, kAlice), 0);
    }
    std::vector<mode_t> modes;
    copyAnd(theirs, SYS_write, [&] { modes.push_back(statusOf(scratch_.path("copy")).st_mode & 07777); });
    EXPECT_EQ(modes, std::vector<mode_t>{0600});
    EXPECT_EQ(statusOf(scratch_.path("copy")).st_mode & 07777, 0644U);
}

// On a disk: not every kernel keeps attributes in memory.
TEST(CopyOfAReadOnlyFile, KeepsItsAttributes) {
    const Scratch scratch(Scratch::currentFolder());
    makeFolder(scratch.path("theirs"));
    makeFile(scratch.path("theirs/file"), "contents", 0600);
    ASSERT_EQ(setAttribute(scratch.path("theirs/file"), "user.sentrel.test", "value", 5), 0);
    ASSERT_EQ(::chmod(scratch.path("theirs/file").c_str(), 0400), 0);
    giveToUnprivileged(scratch.path("theirs"));
    giveToUnprivileged(scratch.path("theirs/file"));
    const auto result = withoutPrivileges([&] {
        Platform::Posix::PosixFileManager files;
        return files.copyItem(scratch.url("theirs/file"), scratch.url("theirs/copy")) ? 1 : 0;
    });
    EXPECT_EQ(result, std::optional(0));
    char value[8] = {};
    EXPECT_EQ(attribute(scratch.path("theirs/copy"), "user.sentrel.test", value, sizeof value), 5);
    EXPECT_STREQ(value, "value");
    EXPECT_EQ(statusOf(scratch.path("theirs/copy")).st_mode, S_IFREG | mode_t{0400});
}

TEST(CopyOfAKernelsFile, IsWholeThoughItClaimsToBeEmpty) {
    const Scratch scratch;
    ASSERT_EQ(statusOf("/proc/version").st_size, 0);
    const auto error = Platform::Posix::PosixFileManager().copyItem(Base::URL::fileURL("/proc/version"),
                                                                    scratch.url("copy"));
    ASSERT_FALSE(error) << error->description;
    EXPECT_NE(contentsOf(scratch.path("copy")), "");
    EXPECT_EQ(contentsOf(scratch.path("copy")), contentsOf("/proc/version"));
}

}  // namespace
}  // namespace PlatformTests
