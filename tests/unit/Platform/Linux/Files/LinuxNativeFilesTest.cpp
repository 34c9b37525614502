#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>

#include "Platform/Posix/Descriptor.h"
#include "Platform/Posix/NativeFiles.h"
#include "support/Scratch.h"
#include "support/SystemCalls.h"

namespace PlatformTests {
namespace {

struct Outcome {
    /// 0 or errno.
    int failure = -1;
    int callsByName = 0;
};

/// Sets a mode of an item itself where the kernel cannot do it in one call.
Outcome setModeByName(const Scratch& scratch, const char* name, mode_t mode) {
    const Platform::Posix::Descriptor item(
        Platform::Posix::openItemItself(AT_FDCWD, scratch.path(name).c_str()));
    Outcome outcome;
    askAboutEachCall(
        [&](long call) {
            outcome.callsByName += call == SYS_chmod || call == SYS_fchmodat ? 1 : 0;
            return call == kChangeModeCall ? ENOSYS : 0;
        },
        [&] { outcome.failure = Platform::Posix::setModeOfOpenItem(item.get(), mode) == 0 ? 0 : errno; });
    return outcome;
}

TEST(ModeUnderAKernelThatSetsItByNameAlone, IsSetOfAFileAndAFolder) {
    const Scratch scratch;
    makeFile(scratch.path("file"), "", 0644);
    makeFolder(scratch.path("folder"), 0755);
    EXPECT_EQ(setModeByName(scratch, "file", 0601).failure, 0);
    EXPECT_EQ(statusOf(scratch.path("file")).st_mode, S_IFREG | mode_t{0601});
    EXPECT_EQ(setModeByName(scratch, "folder", 0710).failure, 0);
    EXPECT_EQ(statusOf(scratch.path("folder")).st_mode, S_IFDIR | mode_t{0710});
}

TEST(ModeUnderAKernelThatSetsItByNameAlone, IsNotThatOfALinksTarget) {
    const Scratch scratch;
    makeFile(scratch.path("file"), "", 0644);
    makeLink("file", scratch.path("link"));
    const Outcome outcome = setModeByName(scratch, "link", 0601);
    EXPECT_EQ(outcome.failure, EOPNOTSUPP);
    EXPECT_EQ(outcome.callsByName, 0) << "which an older kernel would heed";
    EXPECT_EQ(statusOf(scratch.path("file")).st_mode, S_IFREG | mode_t{0644});
}

}  // namespace
}  // namespace PlatformTests
