#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "Platform/Posix/Descriptor.h"
#include "Platform/Posix/NativeFiles.h"
#include "RefusedCall.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

/// What setting a mode of an item itself gives, 0 or errno, where the kernel cannot do it in one call.
int setModeByName(const Scratch& scratch, const char* name, mode_t mode) {
    const Platform::Posix::Descriptor item(
        Platform::Posix::openItemItself(AT_FDCWD, scratch.path(name).c_str()));
    int failure = -1;
    askAboutEachCall(
        [](long call) { return call == kChangeModeCall ? ENOSYS : 0; },
        [&] { failure = Platform::Posix::setModeOfOpenItem(item.get(), mode) == 0 ? 0 : errno; });
    return failure;
}

TEST(ModeUnderAKernelThatSetsItByNameAlone, IsSetOfAFileAndAFolder) {
    const Scratch scratch;
    makeFile(scratch.path("file"), "", 0644);
    makeFolder(scratch.path("folder"), 0755);
    EXPECT_EQ(setModeByName(scratch, "file", 0601), 0);
    EXPECT_EQ(statusOf(scratch.path("file")).st_mode, S_IFREG | mode_t{0601});
    EXPECT_EQ(setModeByName(scratch, "folder", 0710), 0);
    EXPECT_EQ(statusOf(scratch.path("folder")).st_mode, S_IFDIR | mode_t{0710});
}

TEST(ModeUnderAKernelThatSetsItByNameAlone, IsNotThatOfALinksTarget) {
    const Scratch scratch;
    makeFile(scratch.path("file"), "", 0644);
    makeLink("file", scratch.path("link"));
    EXPECT_EQ(setModeByName(scratch, "link", 0601), EOPNOTSUPP);
    EXPECT_EQ(statusOf(scratch.path("file")).st_mode, S_IFREG | mode_t{0644});
}

}  // namespace
}  // namespace PlatformTests
