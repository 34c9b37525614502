#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <random>

#include "Platform/Linux/LinuxFileManager.h"
#include "Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Linux::LinuxFileManager;

class CopyItem : public testing::Test {
  protected:
    [[nodiscard]] std::string path(std::string_view name) const { return scratch.path(name); }
    [[nodiscard]] std::optional<Platform::Error> copy(std::string_view from, std::string_view to) {
        return files.copyItem(scratch.url(from), scratch.url(to));
    }
    void expectCode(const std::optional<Platform::Error>& error, int code) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, code) << error->description;
    }

    Scratch scratch;
    LinuxFileManager files;
};

bool sameTime(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

void setTimes(const std::string& path, time_t seconds) {
    const timespec times[2] = {{seconds, 123456789}, {seconds + 1, 987654321}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

/// `source` has to be the state from before the copy: reading may move an access time.
void expectAlike(const struct stat& source, const std::string& copy) {
    const struct stat status = statusOf(copy);
    EXPECT_EQ(status.st_mode, source.st_mode) << copy;
    EXPECT_EQ(status.st_uid, source.st_uid) << copy;
    EXPECT_EQ(status.st_gid, source.st_gid) << copy;
    EXPECT_TRUE(sameTime(status.st_mtim, source.st_mtim)) << copy;
    EXPECT_TRUE(sameTime(status.st_atim, source.st_atim)) << copy;
}

std::string randomBytes(std::size_t count) {
    std::mt19937 generator(7);
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(generator());
    }
    return bytes;
}

TEST_F(CopyItem, KeepsContentsOfAnySize) {
    for (const std::size_t size : {0U, 1U, 4096U, 131071U, 131072U, 131073U, 3000001U}) {
        const std::string name = std::to_string(size);
        const std::string bytes = randomBytes(size);
        makeFile(path(name), bytes);
        EXPECT_FALSE(copy(name, "copy of " + name));
        EXPECT_TRUE(contentsOf(path("copy of " + name)) == bytes) << size;
    }
}

TEST_F(CopyItem, KeepsModesAndTimesOfFilesFoldersAndLinks) {
    makeFolder(path("top"));
    makeFile(path("top/setuid"), "x", 06755);
    makeFile(path("top/read only"), "x", 0400);
    makeFile(path("top/closed"), "x", 0);
    makeFolder(path("top/sticky"), 01777);
    makeFolder(path("top/setgid"), 02750);
    makeFolder(path("top/read only folder"), 0555);
    makeLink("setuid", path("top/link"));
    makeFile(path("top/sticky/inside"), "x", 0666);
    const char* const names[] = {"top/sticky/inside", "top/setuid", "top/read only",        "top/sticky",
                                 "top/setgid",        "top/link",   "top/read only folder", "top"};
    const mode_t before = ::umask(077);
    time_t seconds = 1'000'000'000;
    std::vector<struct stat> sources;
    for (const char* each : names) {
        setTimes(path(each), seconds += 1000);
    }
    for (const char* each : names) {
        sources.push_back(statusOf(path(each)));
    }
    if (::geteuid() != 0) {
        ASSERT_EQ(::unlink(path("top/closed").c_str()), 0);
        setTimes(path("top"), seconds);
        sources.back() = statusOf(path("top"));
    }
    const auto error = copy("top", "copy");
    ::umask(before);
    ASSERT_FALSE(error) << error->description;
    for (std::size_t index = 0; index < sources.size(); ++index) {
        expectAlike(sources[index], path("copy" + std::string(names[index]).substr(3)));
    }
    EXPECT_EQ(targetOf(path("copy/link")), "setuid");
}

TEST_F(CopyItem, KeepsOwnersWherePermitted) {
    const bool root = ::geteuid() == 0;
    const uid_t owner = root ? 1234 : ::geteuid();
    const gid_t group = root ? 4321 : ::getegid();
    makeFolder(path("top"));
    makeFile(path("top/file"), "x", 04755);
    makeLink("file", path("top/link"));
    for (const char* each : {"top/file", "top/link", "top"}) {
        ASSERT_EQ(::lchown(path(each).c_str(), owner, group), 0);
    }
    ASSERT_EQ(::chmod(path("top/file").c_str(), 04755), 0);
    ASSERT_FALSE(copy("top", "copy"));
    for (const char* each : {"copy/file", "copy/link", "copy"}) {
        EXPECT_EQ(statusOf(path(each)).st_uid, owner) << each;
        EXPECT_EQ(statusOf(path(each)).st_gid, group) << each;
    }
    EXPECT_EQ(statusOf(path("copy/file")).st_mode, S_IFREG | mode_t{04755});
}

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

TEST_F(CopyItem, CopiesALinkAsTheLink) {
    makeFile(path("file"));
    makeLink("file", path("link"));
    makeLink("nowhere", path("dangling"));
    EXPECT_FALSE(copy("link", "copied link"));
    EXPECT_FALSE(copy("dangling", "copied dangling"));
    EXPECT_EQ(targetOf(path("copied link")), "file");
    EXPECT_EQ(targetOf(path("copied dangling")), "nowhere");
}

// Not every kernel keeps such attributes in memory.
TEST(CopyAttributes, KeepsExtendedAttributesOfFilesAndFolders) {
    const Scratch scratch(Scratch::currentFolder());
    LinuxFileManager files;
    makeFolder(scratch.path("top"));
    makeFile(scratch.path("top/file"));
    const std::string value = randomBytes(1000);
    for (const char* each : {"top", "top/file"}) {
        const std::string path = scratch.path(each);
        ASSERT_EQ(::setxattr(path.c_str(), "user.large", value.data(), value.size(), 0), 0)
            << std::strerror(errno);
        ASSERT_EQ(::setxattr(path.c_str(), "user.empty", "", 0, 0), 0);
    }
    ASSERT_FALSE(files.copyItem(scratch.url("top"), scratch.url("copy")));
    for (const char* each : {"copy", "copy/file"}) {
        const std::string path = scratch.path(each);
        std::string found(2000, '\0');
        const ssize_t length = ::getxattr(path.c_str(), "user.large", found.data(), found.size());
        ASSERT_EQ(length, static_cast<ssize_t>(value.size())) << each;
        found.resize(value.size());
        EXPECT_TRUE(found == value);
        EXPECT_EQ(::getxattr(path.c_str(), "user.empty", nullptr, 0), 0);
    }
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

TEST_F(CopyItem, CopiesOddNames) {
    makeFolder(path("top"));
    for (const std::string name : {"new\nline", "-a", "\xff\xfe", "...", "%41"}) {
        makeFile(path("top/" + name), name);
    }
    ASSERT_FALSE(copy("top", "copy"));
    for (const std::string name : {"new\nline", "-a", "\xff\xfe", "...", "%41"}) {
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

// Entries before and after the way down, beyond the number of folders that are held open.
TEST_F(CopyItem, CopiesEverythingAlongADeepWay) {
    makeFolder(path("top"));
    std::string folder = "top";
    for (int level = 0; level < 50; ++level) {
        for (const char* name : {"a", "m", "z"}) {
            makeFile(path(folder + "/" + name), std::to_string(level) + name);
        }
        makeFolder(path(folder + "/side"));
        makeFile(path(folder + "/side/file"), std::to_string(level));
        folder += "/d";
        makeFolder(path(folder), level % 2 == 0 ? 0700 : 0755);
    }
    ASSERT_FALSE(copy("top", "copy"));
    folder = "copy";
    for (int level = 0; level < 50; ++level) {
        for (const char* name : {"a", "m", "z"}) {
            EXPECT_EQ(contentsOf(path(folder + "/" + name)), std::to_string(level) + name);
        }
        EXPECT_EQ(contentsOf(path(folder + "/side/file")), std::to_string(level));
        folder += "/d";
        EXPECT_EQ(statusOf(path(folder)).st_mode & 07777, level % 2 == 0 ? 0700U : 0755U);
    }
}

TEST_F(CopyItem, NeverReplacesAnything) {
    makeFile(path("file"), "new");
    makeFolder(path("folder"));
    makeFile(path("there"), "old");
    makeFolder(path("folder there"));
    makeLink("nowhere", path("dangling"));
    for (const char* source : {"file", "folder", "dangling"}) {
        for (const char* destination : {"there", "folder there", "dangling"}) {
            expectCode(copy(source, destination), EEXIST);
        }
    }
    EXPECT_EQ(contentsOf(path("there")), "old");
    EXPECT_EQ(targetOf(path("dangling")), "nowhere");
    EXPECT_FALSE(exists(path("nowhere")));
    EXPECT_EQ(copy("file", "there")->description,
              "\"" + path("file") + "\" could not be copied to \"" + path("there") + "\": File exists");
}

TEST_F(CopyItem, ReportsAMissingSourceOrParent) {
    makeFile(path("file"));
    expectCode(copy("missing", "copy"), ENOENT);
    EXPECT_FALSE(exists(path("copy")));
    expectCode(copy("file", "missing/copy"), ENOENT);
    expectCode(copy("file", "file/copy"), ENOTDIR);
    EXPECT_EQ(copy("missing", "copy")->description, "\"" + path("missing") + "\" could not be copied to \"" +
                                                        path("copy") + "\": No such file or directory");
}

TEST_F(CopyItem, RefusesAFolderIntoItself) {
    makeFolder(path("top"));
    makeFolder(path("top/below"));
    makeLink("top/below", path("link"));
    expectCode(copy("top", "top/copy"), EINVAL);
    expectCode(copy("top", "top/below/copy"), EINVAL);
    expectCode(copy("top", "link/copy"), EINVAL);
    EXPECT_FALSE(exists(path("top/copy")));
    EXPECT_FALSE(exists(path("top/below/copy")));
    makeFolder(path("top2"));
    EXPECT_FALSE(copy("top", "top2/copy"));
}

TEST_F(CopyItem, StopsAtTheFirstFailureAndNamesIt) {
    makeFolder(path("top"));
    makeFolder(path("top/folder"));
    makeFile(path("top/folder/closed"), "x", 0);
    makeFolder(path("theirs"));
    giveToUnprivileged(path("theirs"));
    if (::geteuid() != 0) {
        ASSERT_EQ(::chmod(path("top/folder/closed").c_str(), 0), 0);
    }
    const auto result = withoutPrivileges([this] {
        const auto error = copy("top", "theirs/copy");
        const std::string expected = "\"" + path("top/folder/closed") + "\" could not be copied to \"" +
                                     path("theirs/copy/folder/closed") + "\": Permission denied";
        return error && error->code == EACCES && error->description == expected ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
    EXPECT_TRUE(exists(path("theirs/copy/folder")));
    EXPECT_FALSE(exists(path("theirs/copy/folder/closed")));
}

}  // namespace
}  // namespace PlatformTests
