#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <sched.h>

#include "FileManagerContract.h"
#include "OwnershipContract.h"
#include "Platform/Posix/PosixFileManager.h"
#include "RemovalContract.h"

namespace PlatformTests {

using Platform::Posix::PosixFileManager;

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FileManagerContract, PosixFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, OwnershipContract, PosixFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, RemovalContract, PosixFileManager);

namespace {

TEST(Identity, IsDeviceInodeAndTimeOfTheLastChange) {
    const Scratch scratch;
    PosixFileManager files;
    makeFile(scratch.path("file"));
    struct stat status {};
    ASSERT_EQ(::lstat(scratch.path("file").c_str(), &status), 0);
    EXPECT_EQ(files.identity(scratch.url("file")),
              (Platform::FileIdentity{status.st_dev, status.st_ino, status.st_ctim.tv_sec,
                                      status.st_ctim.tv_nsec}));
    EXPECT_EQ(files.identity(scratch.url("file")), files.identity(scratch.url("file")));
}

TEST(Identity, IsAnotherOneForAnItemThatTookTheFirstOnesPlace) {
    const Scratch scratch;
    PosixFileManager files;
    makeFile(scratch.path("file"));
    makeFile(scratch.path("other"));
    const auto first = files.identity(scratch.url("file"));
    ASSERT_EQ(::rename(scratch.path("other").c_str(), scratch.path("file").c_str()), 0);
    EXPECT_NE(files.identity(scratch.url("file")), first);
}

TEST(Identity, OfALinkIsItsOwnAndOfNothingIsNothing) {
    const Scratch scratch;
    PosixFileManager files;
    makeFile(scratch.path("file"));
    makeLink("file", scratch.path("link"));
    EXPECT_NE(files.identity(scratch.url("link")), std::nullopt);
    EXPECT_NE(files.identity(scratch.url("link")), files.identity(scratch.url("file")));
    EXPECT_EQ(files.identity(scratch.url("missing")), std::nullopt);
}

TEST(RemoveItem, NeedsFewDescriptors) {
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    giveToUnprivileged(scratch.path());
    makeDeepFolders(scratch.path("top"), 100);
    const pid_t child = ::fork();
    if (child == 0) {
        const rlim_t allowed = static_cast<rlim_t>(openDescriptors()) + 40;
        const rlimit limit{allowed, allowed};
        PosixFileManager files;
        ::_exit(::setrlimit(RLIMIT_NOFILE, &limit) == 0 && !files.removeItem(scratch.url("top")) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

// In a mount namespace of its own where this process may make one: otherwise the mount point is /proc, which
// nobody can remove anything from.
TEST(RemoveItem, DoesNotEnterAMountPoint) {
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    makeFolder(scratch.path("top/mounted"));
    makeFile(scratch.path("top/file"));
    const pid_t child = ::fork();
    if (child == 0) {
        PosixFileManager files;
        const bool mounted = ::unshare(CLONE_NEWNS) == 0 &&
                             ::mount("", "/", "", MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             ::mount("tmpfs", scratch.path("top/mounted").c_str(), "tmpfs", 0, nullptr) == 0;
        if (!mounted) {
            const auto error = files.removeItem(Base::URL::fileURL("/proc"));
            ::_exit(error && error->code == EBUSY ? 0 : 1);
        }
        makeFile(scratch.path("top/mounted/kept"));
        const auto error = files.removeItem(scratch.url("top"));
        const bool right = error && error->code == EBUSY && exists(scratch.path("top/mounted/kept")) &&
                           !exists(scratch.path("top/file")) &&
                           files.removeItem(scratch.url("top/mounted"))->code == EBUSY &&
                           exists(scratch.path("top/mounted/kept"));
        ::_exit(right ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

// A folder that something is mounted on is listed with the number of the folder below it. After the walk has
// come back to where it is listed, it has to go on behind it.
TEST(SetOwnerOfContents, GoesOnBehindAMountPointThatItCameBackFromADeepWay) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can mount";
    }
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    const auto makeFiles = [&](const std::string& name) {
        for (int number = 0; number < 50; ++number) {
            makeFile(scratch.path("top/" + name + std::to_string(number)), "");
        }
    };
    makeFiles("before ");
    makeFolder(scratch.path("top/mounted"));
    makeFiles("behind ");
    const pid_t child = ::fork();
    if (child == 0) {
        PosixFileManager files;
        const std::string mounted = scratch.path("top/mounted");
        const bool ready = ::unshare(CLONE_NEWNS) == 0 &&
                           ::mount("", "/", "", MS_REC | MS_PRIVATE, nullptr) == 0 &&
                           ::mount("tmpfs", mounted.c_str(), "tmpfs", 0, nullptr) == 0;
        if (!ready) {
            ::_exit(2);
        }
        makeDeepFolders(mounted, 40);
        int failures = 0;
        files.setOwnerOfContents(scratch.url("top"), 1234, 4321, [&](const Base::URL&, int) { ++failures; });
        ::_exit(failures == 0 && statusOf(mounted + "/d/d").st_uid == 1234 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    for (const std::string name : {"before ", "behind "}) {
        for (int number = 0; number < 50; ++number) {
            EXPECT_EQ(statusOf(scratch.path("top/" + name + std::to_string(number))).st_uid, 1234U);
        }
    }
}

TEST(SetMode, GivesOperationNotSupportedForALink) {
    const Scratch scratch;
    makeLink("nowhere", scratch.path("link"));
    PosixFileManager files;
    EXPECT_EQ(files.setMode(scratch.url("link"), 0600), EOPNOTSUPP);
}

TEST(SetMode, DoesNotWaitForTheOtherEndOfAFIFO) {
    const Scratch scratch;
    ASSERT_EQ(::mkfifo(scratch.path("fifo").c_str(), 0600), 0);
    PosixFileManager files;
    EXPECT_EQ(files.setMode(scratch.url("fifo"), 0640), 0);
    EXPECT_EQ(statusOf(scratch.path("fifo")).st_mode, S_IFIFO | mode_t{0640});
}

}  // namespace
}  // namespace PlatformTests
