// The macOS file manager over GNUstep's Foundation, with this system's native file calls.
#include <sys/xattr.h>

#include <cstring>

#include "CopyContract.h"
#include "CopyTimes.h"
#include "FileManagerContract.h"
#include "Platform/Darwin/DarwinFileManager.h"

namespace PlatformTests {

using Platform::Darwin::DarwinFileManager;

INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, FileManagerContract, DarwinFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, CopyContract, DarwinFileManager);

namespace {

class DarwinCopy : public CopyContract<DarwinFileManager> {};

TEST_F(DarwinCopy, RefusesPathsThatAMacCannotHave) {
    makeFile(path("file"));
    makeFile(path("\xff"));
    expectCode(copy("\xff", "copy"), EILSEQ);
    expectCode(copy("file", "\xc3"), EILSEQ);
    expectCode(copy("file", std::string_view("a\0b", 3)), EILSEQ);
    EXPECT_FALSE(exists(path("copy")));
    EXPECT_FALSE(exists(path("\xc3")));
    EXPECT_FALSE(exists(path("a")));
}

TEST_F(DarwinCopy, KeepsEveryModeBit) {
    makeFolder(path("top"), 0750);
    makeFile(path("top/setuid"), "x", 04755);
    makeFile(path("top/read only"), "x", 0400);
    makeFolder(path("top/sticky"), 01777);
    const mode_t before = ::umask(077);
    const auto error = copy("top", "copy");
    ::umask(before);
    ASSERT_FALSE(error) << error->description;
    for (const char* name : {"", "/setuid", "/read only", "/sticky"}) {
        EXPECT_EQ(statusOf(path("copy" + std::string(name))).st_mode,
                  statusOf(path("top" + std::string(name))).st_mode)
            << name;
    }
}

// Where GNUstep is not like a Mac. A test here that fails says that CopyDetailsContract can be held there
// now.

TEST_F(DarwinCopy, OnGNUstepKeepsNoTimes) {
    makeFile(path("file"));
    setTimes(path("file"), 1'000'000'000);
    ASSERT_FALSE(copy("file", "copy"));
    EXPECT_FALSE(sameTime(statusOf(path("copy")).st_mtim, statusOf(path("file")).st_mtim));
}

TEST_F(DarwinCopy, OnGNUstepKeepsNoExtendedAttributes) {
    const Scratch onDisk(Scratch::currentFolder());
    makeFile(onDisk.path("file"));
    ASSERT_EQ(::setxattr(onDisk.path("file").c_str(), "user.some", "x", 1, 0), 0) << std::strerror(errno);
    ASSERT_FALSE(files.copyItem(onDisk.url("file"), onDisk.url("copy")));
    EXPECT_EQ(::getxattr(onDisk.path("copy").c_str(), "user.some", nullptr, 0), -1);
    EXPECT_EQ(errno, ENODATA);
}

TEST_F(DarwinCopy, OnGNUstepKeepsNoOwnerOfALinkOrAFolder) {
    makeFolder(path("folder"));
    makeLink("nowhere", path("link"));
    for (const char* name : {"folder", "link"}) {
        if (::geteuid() == 0) {
            ASSERT_EQ(::lchown(path(name).c_str(), 1234, 4321), 0);
        }
        ASSERT_FALSE(copy(name, "copy of " + std::string(name)));
        EXPECT_EQ(statusOf(path("copy of " + std::string(name))).st_uid, ::geteuid()) << name;
    }
}

// It stops there as well, but does not say at which entry.
TEST_F(DarwinCopy, OnGNUstepNamesTheWholeCopyWhenAnEntryFails) {
    makeFolder(path("top"));
    makeFolder(path("top/folder"));
    makeFile(path("top/folder/closed"), "x", 0);
    makeFolder(path("theirs"));
    giveToUnprivileged(path("theirs"));
    const auto result = withoutPrivileges([this] {
        const auto error = copy("top", "theirs/copy");
        const std::string expected = "\"" + path("top") + "\" could not be copied to \"" +
                                     path("theirs/copy") + "\": Permission denied";
        return error && error->code == EACCES && error->description == expected ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
    EXPECT_TRUE(exists(path("theirs/copy/folder")));
    EXPECT_FALSE(exists(path("theirs/copy/folder/closed")));
}

}  // namespace
}  // namespace PlatformTests
