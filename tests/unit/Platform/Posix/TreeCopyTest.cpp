#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <vector>

#include "CopyContract.h"
#include "CopyDetailsContract.h"
#include "Platform/Posix/PosixFileManager.h"

namespace PlatformTests {

using Platform::Posix::PosixFileManager;

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, CopyContract, PosixFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, CopyDetailsContract, PosixFileManager);

namespace {

// What this system's copies do beyond that.
class CopyItem : public CopyContract<PosixFileManager> {};

// Otherwise a copy would run with the rights of whoever made it.
TEST_F(CopyItem, DropsSetIdBitsWithTheOwner) {
    makeFile(path("program"), "x", 06755);
    if (::geteuid() != 0) {
        // A file of somebody else's that anybody may read is at hand on every system.
        ASSERT_FALSE(files.copyItem(Base::URL::fileURL("/etc/passwd"), scratch.url("copy")));
        EXPECT_EQ(statusOf(path("copy")).st_uid, ::geteuid());
        return;
    }
    makeFolder(path("theirs"));
    giveToUnprivileged(path("theirs"));
    const auto result = withoutPrivileges([this] { return copy("program", "theirs/copy") ? 1 : 0; });
    EXPECT_EQ(result, std::optional(0));
    EXPECT_NE(statusOf(path("theirs/copy")).st_uid, 0U);
    EXPECT_EQ(statusOf(path("theirs/copy")).st_mode, S_IFREG | mode_t{0755});
}

TEST_F(CopyItem, KeepsHoles) {
    const int file = ::open(path("sparse").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(file, 0);
    ASSERT_EQ(::pwrite(file, "begin", 5, 0), 5);
    ASSERT_EQ(::pwrite(file, "middle", 6, 20 << 20), 6);
    ASSERT_EQ(::ftruncate(file, 50 << 20), 0);
    ::close(file);
    ASSERT_FALSE(copy("sparse", "copy"));
    EXPECT_EQ(statusOf(path("copy")).st_size, 50 << 20);
    EXPECT_LT(statusOf(path("copy")).st_blocks * 512, 1 << 20);
    EXPECT_TRUE(contentsOf(path("copy")) == contentsOf(path("sparse")));
}

// The first buffer for the names holds 1,024 bytes.
TEST_F(CopyItem, KeepsExtendedAttributesWithManyLongNames) {
    const Scratch onDisk(Scratch::currentFolder());
    makeFile(onDisk.path("file"));
    std::vector<std::string> names;
    for (char letter = 'a'; letter < 'k'; ++letter) {
        names.push_back("user." + std::string(150, letter));
        ASSERT_EQ(::setxattr(onDisk.path("file").c_str(), names.back().c_str(), &letter, 1, 0), 0)
            << std::strerror(errno);
    }
    ASSERT_FALSE(files.copyItem(onDisk.url("file"), onDisk.url("copy")));
    for (const std::string& name : names) {
        char value = 0;
        EXPECT_EQ(::getxattr(onDisk.path("copy").c_str(), name.c_str(), &value, 1), 1) << name;
        EXPECT_EQ(value, name.back());
    }
}

// Several threads may be at work in it; with privileges, none would notice.
TEST_F(CopyItem, MakesAFolderReadOnlyWhenEverythingIsInIt) {
    constexpr int kFiles = 3000;
    makeFolder(path("top"));
    for (int number = 0; number < kFiles; ++number) {
        makeFile(path("top/" + std::to_string(number)), "");
    }
    ASSERT_EQ(::chmod(path("top").c_str(), 0555), 0);
    makeFolder(path("theirs"));
    giveToUnprivileged(path("theirs"));
    const auto result = withoutPrivileges([this] { return copy("top", "theirs/copy") ? 1 : 0; });
    EXPECT_EQ(result, std::optional(0));
    const std::filesystem::directory_iterator copies(path("theirs/copy"));
    EXPECT_EQ(std::distance(begin(copies), end(copies)), kFiles);
    EXPECT_EQ(statusOf(path("theirs/copy")).st_mode, S_IFDIR | mode_t{0555});
}

TEST_F(CopyItem, CopiesFIFOsAndSockets) {
    makeFolder(path("top"));
    ASSERT_EQ(::mkfifo(path("top/fifo").c_str(), 0640), 0);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path("top/socket").c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(listener);
    setTimes(path("top/fifo"), 1'100'000'000);
    const struct stat fifo = statusOf(path("top/fifo"));
    const struct stat socket = statusOf(path("top/socket"));
    ASSERT_FALSE(copy("top", "copy"));
    expectAlike(fifo, path("copy/fifo"));
    expectAlike(socket, path("copy/socket"));
}

TEST_F(CopyItem, CopiesNamesThatAreNoText) {
    makeFolder(path("top"));
    for (const std::string name : {"\xff\xfe", "\xc3"}) {
        makeFile(path("top/" + name), name);
    }
    ASSERT_FALSE(copy("top", "copy"));
    for (const std::string name : {"\xff\xfe", "\xc3"}) {
        EXPECT_EQ(contentsOf(path("copy/" + name)), name);
    }
}

TEST_F(CopyItem, CopiesFiveThousandNestedFolders) {
    makeFolder(path("top"));
    makeDeepFolders(path("top"), 5000);
    const int before = openDescriptors();
    ASSERT_FALSE(copy("top", "copy"));
    EXPECT_EQ(openDescriptors(), before);
    const Depth depth = depthOf(path("copy"));
    EXPECT_EQ(depth.folders, 5000);
    EXPECT_TRUE(depth.leaf);
    EXPECT_FALSE(files.removeItem(scratch.url("top")));
    EXPECT_FALSE(files.removeItem(scratch.url("copy")));
}

}  // namespace
}  // namespace PlatformTests
