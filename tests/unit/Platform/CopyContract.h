#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <random>

#include "Platform/FileManager.h"
#include "support/Scratch.h"

/// What every FileManager promises of copying, for any implementation that works on the real file system.
/// What a copy keeps of an item besides its contents, and where it stops, is in CopyDetailsContract.h.
namespace PlatformTests {

inline std::string randomBytes(std::size_t count) {
    std::mt19937 generator(7);
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(generator());
    }
    return bytes;
}

template <class Files>
class CopyContract : public testing::Test {
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
    Files files;
};

TYPED_TEST_SUITE_P(CopyContract);

TYPED_TEST_P(CopyContract, KeepsContentsOfAnySize) {
    for (const std::size_t size : {0U, 1U, 4096U, 131071U, 131072U, 131073U, 3000001U}) {
        const std::string name = std::to_string(size);
        const std::string bytes = randomBytes(size);
        makeFile(this->path(name), bytes);
        EXPECT_FALSE(this->copy(name, "copy of " + name));
        EXPECT_TRUE(contentsOf(this->path("copy of " + name)) == bytes) << size;
    }
}

TYPED_TEST_P(CopyContract, CopiesALinkAsTheLink) {
    makeFile(this->path("file"));
    makeLink("file", this->path("link"));
    makeLink("nowhere", this->path("dangling"));
    EXPECT_FALSE(this->copy("link", "copied link"));
    EXPECT_FALSE(this->copy("dangling", "copied dangling"));
    EXPECT_EQ(targetOf(this->path("copied link")), "file");
    EXPECT_EQ(targetOf(this->path("copied dangling")), "nowhere");
}

// Entries before and after the way down, beyond the number of folders that are held open.
TYPED_TEST_P(CopyContract, CopiesEverythingAlongADeepWay) {
    makeFolder(this->path("top"));
    std::string folder = "top";
    for (int level = 0; level < 50; ++level) {
        for (const char* name : {"a", "m", "z"}) {
            makeFile(this->path(folder + "/" + name), std::to_string(level) + name);
        }
        makeFolder(this->path(folder + "/side"));
        makeFile(this->path(folder + "/side/file"), std::to_string(level));
        folder += "/d";
        makeFolder(this->path(folder), level % 2 == 0 ? 0700 : 0755);
    }
    ASSERT_FALSE(this->copy("top", "copy"));
    folder = "copy";
    for (int level = 0; level < 50; ++level) {
        for (const char* name : {"a", "m", "z"}) {
            EXPECT_EQ(contentsOf(this->path(folder + "/" + name)), std::to_string(level) + name);
        }
        EXPECT_EQ(contentsOf(this->path(folder + "/side/file")), std::to_string(level));
        folder += "/d";
        EXPECT_EQ(statusOf(this->path(folder)).st_mode & 07777, level % 2 == 0 ? 0700U : 0755U);
    }
}

TYPED_TEST_P(CopyContract, NeverReplacesAnything) {
    makeFile(this->path("file"), "new");
    makeFolder(this->path("folder"));
    makeFile(this->path("there"), "old");
    makeFolder(this->path("folder there"));
    makeLink("nowhere", this->path("dangling"));
    for (const char* source : {"file", "folder", "dangling"}) {
        for (const char* destination : {"there", "folder there", "dangling"}) {
            this->expectCode(this->copy(source, destination), EEXIST);
        }
    }
    EXPECT_EQ(contentsOf(this->path("there")), "old");
    EXPECT_EQ(targetOf(this->path("dangling")), "nowhere");
    EXPECT_FALSE(exists(this->path("nowhere")));
    EXPECT_EQ(
        this->copy("file", "there")->description,
        "\"" + this->path("file") + "\" could not be copied to \"" + this->path("there") + "\": File exists");
}

TYPED_TEST_P(CopyContract, ReportsAMissingSourceOrParent) {
    makeFile(this->path("file"));
    this->expectCode(this->copy("missing", "copy"), ENOENT);
    EXPECT_FALSE(exists(this->path("copy")));
    this->expectCode(this->copy("file", "missing/copy"), ENOENT);
    this->expectCode(this->copy("file", "file/copy"), ENOTDIR);
    EXPECT_EQ(this->copy("missing", "copy")->description,
              "\"" + this->path("missing") + "\" could not be copied to \"" + this->path("copy") +
                  "\": No such file or directory");
}

TYPED_TEST_P(CopyContract, RefusesAFolderIntoItself) {
    makeFolder(this->path("top"));
    makeFolder(this->path("top/below"));
    makeLink("top/below", this->path("link"));
    this->expectCode(this->copy("top", "top/copy"), EINVAL);
    this->expectCode(this->copy("top", "top/below/copy"), EINVAL);
    this->expectCode(this->copy("top", "link/copy"), ELOOP);
    EXPECT_FALSE(exists(this->path("top/copy")));
    EXPECT_FALSE(exists(this->path("top/below/copy")));
    makeFolder(this->path("top2"));
    EXPECT_FALSE(this->copy("top", "top2/copy"));
}

TYPED_TEST_P(CopyContract, CopiesOddNames) {
    makeFolder(this->path("top"));
    for (const std::string name : {"new\nline", "-a", "*", "\xc3\xa9", "...", "%41"}) {
        makeFile(this->path("top/" + name), name);
    }
    ASSERT_FALSE(this->copy("top", "copy"));
    for (const std::string name : {"new\nline", "-a", "*", "\xc3\xa9", "...", "%41"}) {
        EXPECT_EQ(contentsOf(this->path("copy/" + name)), name);
    }
}

// Not every kernel keeps such attributes in memory.
REGISTER_TYPED_TEST_SUITE_P(CopyContract, KeepsContentsOfAnySize, CopiesALinkAsTheLink,
                            CopiesEverythingAlongADeepWay, NeverReplacesAnything,
                            ReportsAMissingSourceOrParent, RefusesAFolderIntoItself, CopiesOddNames);

}  // namespace PlatformTests
