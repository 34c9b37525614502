#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <vector>

#include "CopyContract.h"
#include "CopyTimes.h"
#include "NativeFiles.h"

/// What every FileManager promises that a copy keeps of an item besides its contents, and where it stops.
namespace PlatformTests {

/// `source` has to be the state from before the copy: reading may move an access time.
inline void expectAlike(const struct stat& source, const std::string& copy) {
    const struct stat status = statusOf(copy);
    EXPECT_EQ(status.st_mode, source.st_mode) << copy;
    EXPECT_EQ(status.st_uid, source.st_uid) << copy;
    EXPECT_EQ(status.st_gid, source.st_gid) << copy;
    EXPECT_TRUE(sameTime(modificationTime(status), modificationTime(source))) << copy;
    EXPECT_TRUE(sameTime(accessTime(status), accessTime(source))) << copy;
}

template <class Files>
class CopyDetailsContract : public CopyContract<Files> {};

TYPED_TEST_SUITE_P(CopyDetailsContract);

TYPED_TEST_P(CopyDetailsContract, StopsAtTheFirstFailureAndNamesIt) {
    makeFolder(this->path("top"));
    makeFolder(this->path("top/folder"));
    makeFile(this->path("top/folder/closed"), "x", 0);
    makeFolder(this->path("theirs"));
    giveToUnprivileged(this->path("theirs"));
    if (::geteuid() != 0) {
        ASSERT_EQ(::chmod(this->path("top/folder/closed").c_str(), 0), 0);
    }
    const auto result = withoutPrivileges([this] {
        const auto error = this->copy("top", "theirs/copy");
        const std::string expected = "\"" + this->path("top/folder/closed") + "\" could not be copied to \"" +
                                     this->path("theirs/copy/folder/closed") + "\": Permission denied";
        return error && error->code == EACCES && error->description == expected ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
    EXPECT_TRUE(exists(this->path("theirs/copy/folder")));
    EXPECT_FALSE(exists(this->path("theirs/copy/folder/closed")));
}

TYPED_TEST_P(CopyDetailsContract, KeepsModesAndTimesOfFilesFoldersAndLinks) {
    makeFolder(this->path("top"));
    makeFile(this->path("top/setuid"), "x", 06755);
    makeFile(this->path("top/read only"), "x", 0400);
    makeFile(this->path("top/closed"), "x", 0);
    makeFolder(this->path("top/sticky"), 01777);
    makeFolder(this->path("top/setgid"), 02750);
    makeFolder(this->path("top/read only folder"), 0555);
    makeLink("setuid", this->path("top/link"));
    makeFile(this->path("top/sticky/inside"), "x", 0666);
    const char* const names[] = {"top/sticky/inside", "top/setuid", "top/read only",        "top/sticky",
                                 "top/setgid",        "top/link",   "top/read only folder", "top"};
    const mode_t before = ::umask(077);
    time_t seconds = 1'000'000'000;
    std::vector<struct stat> sources;
    for (const char* each : names) {
        setTimes(this->path(each), seconds += 1000);
    }
    for (const char* each : names) {
        sources.push_back(statusOf(this->path(each)));
    }
    if (::geteuid() != 0) {
        ASSERT_EQ(::unlink(this->path("top/closed").c_str()), 0);
        setTimes(this->path("top"), seconds);
        sources.back() = statusOf(this->path("top"));
    }
    const auto error = this->copy("top", "copy");
    ::umask(before);
    ASSERT_FALSE(error) << error->description;
    for (std::size_t index = 0; index < sources.size(); ++index) {
        expectAlike(sources[index], this->path("copy" + std::string(names[index]).substr(3)));
    }
    EXPECT_EQ(targetOf(this->path("copy/link")), "setuid");
}

TYPED_TEST_P(CopyDetailsContract, KeepsOwnersWherePermitted) {
    const bool root = ::geteuid() == 0;
    const uid_t owner = root ? 1234 : ::geteuid();
    const gid_t group = root ? 4321 : ::getegid();
    makeFolder(this->path("top"));
    makeFile(this->path("top/file"), "x", 04755);
    makeLink("file", this->path("top/link"));
    for (const char* each : {"top/file", "top/link", "top"}) {
        ASSERT_EQ(::lchown(this->path(each).c_str(), owner, group), 0);
    }
    ASSERT_EQ(::chmod(this->path("top/file").c_str(), 04755), 0);
    ASSERT_FALSE(this->copy("top", "copy"));
    for (const char* each : {"copy/file", "copy/link", "copy"}) {
        EXPECT_EQ(statusOf(this->path(each)).st_uid, owner) << each;
        EXPECT_EQ(statusOf(this->path(each)).st_gid, group) << each;
    }
    EXPECT_EQ(statusOf(this->path("copy/file")).st_mode, S_IFREG | mode_t{04755});
}

TYPED_TEST_P(CopyDetailsContract, KeepsExtendedAttributesOfFilesAndFolders) {
    const Scratch onDisk(Scratch::currentFolder());
    makeFolder(onDisk.path("top"));
    makeFile(onDisk.path("top/file"));
    const std::string value = randomBytes(1000);
    for (const char* each : {"top", "top/file"}) {
        const std::string path = onDisk.path(each);
        ASSERT_EQ(setAttribute(path, "user.large", value.data(), value.size()), 0) << std::strerror(errno);
        ASSERT_EQ(setAttribute(path, "user.empty", "", 0), 0);
    }
    ASSERT_FALSE(this->files.copyItem(onDisk.url("top"), onDisk.url("copy")));
    for (const char* each : {"copy", "copy/file"}) {
        const std::string path = onDisk.path(each);
        std::string found(2000, '\0');
        const ssize_t length = attribute(path, "user.large", found.data(), found.size());
        ASSERT_EQ(length, static_cast<ssize_t>(value.size())) << each;
        found.resize(value.size());
        EXPECT_TRUE(found == value);
        EXPECT_EQ(attribute(path, "user.empty", nullptr, 0), 0);
    }
}

REGISTER_TYPED_TEST_SUITE_P(CopyDetailsContract, KeepsModesAndTimesOfFilesFoldersAndLinks,
                            KeepsOwnersWherePermitted, KeepsExtendedAttributesOfFilesAndFolders,
                            StopsAtTheFirstFailureAndNamesIt);

}  // namespace PlatformTests
