// Copies while a system call fails, as it would on a bad or full disk: the kernel is told to refuse it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

#include "Platform/Posix/PosixFileManager.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

constexpr std::size_t kLarge = 1 << 20;

/// From now on, every such call of this process fails with `code`, and no file is cloned (seccomp(2)).
bool refuse(long call, int code) {
    constexpr auto kNumber = static_cast<std::uint32_t>(offsetof(seccomp_data, nr));
    const auto refusal = [](int error) { return SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error); };
    std::array<sock_filter, 6> steps{
        sock_filter{BPF_LD | BPF_W | BPF_ABS, 0, 0, kNumber},
        sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<std::uint32_t>(call)},
        sock_filter{BPF_RET | BPF_K, 0, 0, refusal(code)},
        sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, 1, SYS_ioctl},
        sock_filter{BPF_RET | BPF_K, 0, 0, refusal(EOPNOTSUPP)},
        sock_filter{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW}};
    const sock_fprog program{static_cast<unsigned short>(steps.size()), steps.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

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

    /// The code of the copy's error, 0 if it succeeds; in a process of its own, which keeps its filter for
    /// ever.
    [[nodiscard]] int codeOf(const Failure& failure, const std::string& copy) {
        const pid_t child = ::fork();
        if (child == 0) {
            // Takes bits from the copy's first mode.
            ::umask(022);
            if (!refuse(failure.call, failure.code)) {
                ::_exit(255);
            }
            const auto error = files_.copyItem(scratch_.url(failure.item), scratch_.url(copy));
            ::_exit(error ? static_cast<int>(error->code) : 0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
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
        {"link", SYS_utimensat, EIO},
        {"fifo", SYS_mknodat, EIO},
        {"fifo", SYS_fchownat, EIO},
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
