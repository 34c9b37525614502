#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/FileManager.h"
#include "support/Scratch.h"

/// What every FileManager promises, for any implementation that works on the real file system:
///   INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FileManagerContract, PosixFileManager);
namespace PlatformTests {

template <class Files>
class FileManagerContract : public testing::Test {
  protected:
    [[nodiscard]] std::string path(std::string_view name) const { return scratch.path(name); }
    [[nodiscard]] Base::URL url(std::string_view name) const { return scratch.url(name); }
    [[nodiscard]] std::string message(std::string_view name, std::string_view rest) const {
        return "\"" + path(name) + "\" could not be " + std::string(rest);
    }

    Scratch scratch;
    Files files;
};

TYPED_TEST_SUITE_P(FileManagerContract);

TYPED_TEST_P(FileManagerContract, CreatesAFolderWithModeLessUmask) {
    const mode_t before = ::umask(0);
    const auto error = this->files.createDirectory(this->url("open"), false);
    ::umask(0325);
    const auto masked = this->files.createDirectory(this->url("new"), false);
    const auto below = this->files.createDirectory(this->url("a/b"), true);
    ::umask(before);
    EXPECT_FALSE(error);
    EXPECT_FALSE(masked);
    EXPECT_EQ(statusOf(this->path("open")).st_mode, S_IFDIR | mode_t{0777});
    EXPECT_EQ(statusOf(this->path("new")).st_mode, S_IFDIR | mode_t{0452});
    EXPECT_EQ(statusOf(this->path("a")).st_mode, S_IFDIR | mode_t{0452});
    EXPECT_EQ(!below, ::geteuid() == 0) << "the mask leaves no right to write to \"a\"";
}

TYPED_TEST_P(FileManagerContract, CreatesMissingParentsWhenAsked) {
    EXPECT_FALSE(this->files.createDirectory(this->url("a/b/c/d"), true));
    EXPECT_TRUE(S_ISDIR(statusOf(this->path("a/b/c/d")).st_mode));
    EXPECT_FALSE(this->files.createDirectory(this->url("a/b/x"), true));
    EXPECT_TRUE(S_ISDIR(statusOf(this->path("a/b/x")).st_mode));
}

TYPED_TEST_P(FileManagerContract, TakesAnExistingFolderWithIntermediates) {
    makeFolder(this->path("there"));
    makeLink("there", this->path("link"));
    EXPECT_FALSE(this->files.createDirectory(this->url("there"), true));
    EXPECT_FALSE(this->files.createDirectory(this->url("link"), true));
    EXPECT_FALSE(this->files.createDirectory(Base::URL::fileURL("/"), true));
}

TYPED_TEST_P(FileManagerContract, RefusesAMissingParentOrAnExistingItemWithoutIntermediates) {
    makeFolder(this->path("there"));
    auto error = this->files.createDirectory(this->url("there"), false);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EEXIST);
    EXPECT_EQ(error->description, this->message("there", "created: File exists"));
    error = this->files.createDirectory(this->url("missing/new"), false);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOENT);
    EXPECT_EQ(error->description, this->message("missing/new", "created: No such file or directory"));
    EXPECT_FALSE(exists(this->path("missing")));
}

TYPED_TEST_P(FileManagerContract, RefusesToCreateAFolderOverOrBelowAFile) {
    makeFile(this->path("file"));
    makeLink("nowhere", this->path("dangling"));
    auto error = this->files.createDirectory(this->url("file"), true);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EEXIST);
    error = this->files.createDirectory(this->url("file/a/b"), true);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ENOTDIR);
    error = this->files.createDirectory(this->url("dangling"), true);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EEXIST);
}

TYPED_TEST_P(FileManagerContract, SeesOnlyVisibleEntries) {
    Platform::Error error;
    makeFolder(this->path("folder"));
    EXPECT_EQ(this->files.hasVisibleEntries(this->url("folder"), error), std::optional(false));
    makeFile(this->path("folder/.hidden"));
    makeFolder(this->path("folder/..also hidden"));
    EXPECT_EQ(this->files.hasVisibleEntries(this->url("folder"), error), std::optional(false));
    makeLink("nowhere", this->path("folder/dangling"));
    EXPECT_EQ(this->files.hasVisibleEntries(this->url("folder"), error), std::optional(true));
    EXPECT_EQ(error, Platform::Error());
}

TYPED_TEST_P(FileManagerContract, ListsThroughALinkToAFolder) {
    Platform::Error error;
    makeFolder(this->path("folder"));
    makeFile(this->path("folder/file"));
    makeLink("folder", this->path("link"));
    EXPECT_EQ(this->files.hasVisibleEntries(this->url("link"), error), std::optional(true));
}

TYPED_TEST_P(FileManagerContract, SaysWhyAFolderCannotBeListed) {
    Platform::Error error;
    makeFile(this->path("file"));
    EXPECT_FALSE(this->files.hasVisibleEntries(this->url("missing"), error).has_value());
    EXPECT_EQ(error,
              (Platform::Error{this->message("missing", "listed: No such file or directory"), ENOENT}));
    EXPECT_FALSE(this->files.hasVisibleEntries(this->url("file"), error).has_value());
    EXPECT_EQ(error, (Platform::Error{this->message("file", "listed: Not a directory"), ENOTDIR}));
}

TYPED_TEST_P(FileManagerContract, CannotListAnUnreadableFolder) {
    makeFolder(this->path("closed"));
    giveToUnprivileged(this->path("closed"));
    ASSERT_EQ(::chmod(this->path("closed").c_str(), 0), 0);
    const auto result = withoutPrivileges([this] {
        Platform::Error error;
        return this->files.hasVisibleEntries(this->url("closed"), error) ? 0 : error.code;
    });
    EXPECT_EQ(result, std::optional(EACCES));
}

TYPED_TEST_P(FileManagerContract, FollowsLinksToTellWhetherAnItemExists) {
    makeFile(this->path("file"), "", 0);
    makeLink("file", this->path("link"));
    makeLink("nowhere", this->path("dangling"));
    EXPECT_TRUE(this->files.itemExists(this->url("file")));
    EXPECT_TRUE(this->files.itemExists(this->url("link")));
    EXPECT_TRUE(this->files.itemExists(Base::URL::fileURL(this->scratch.path())));
    EXPECT_FALSE(this->files.itemExists(this->url("dangling")));
    EXPECT_FALSE(this->files.itemExists(this->url("missing")));
    EXPECT_FALSE(this->files.itemExists(this->url("file/below")));
}

TYPED_TEST_P(FileManagerContract, SetsEveryModeBit) {
    makeFile(this->path("file"));
    makeFolder(this->path("folder"));
    EXPECT_EQ(this->files.setMode(this->url("file"), 06751), 0);
    EXPECT_EQ(statusOf(this->path("file")).st_mode, S_IFREG | mode_t{06751});
    EXPECT_EQ(this->files.setMode(this->url("folder"), 01000), 0);
    EXPECT_EQ(statusOf(this->path("folder")).st_mode, S_IFDIR | mode_t{01000});
    EXPECT_EQ(this->files.setMode(this->url("folder"), 644), 0);
    EXPECT_EQ(statusOf(this->path("folder")).st_mode, S_IFDIR | mode_t{01204});
}

TYPED_TEST_P(FileManagerContract, NeverChangesTheModeOfALinksTarget) {
    makeFile(this->path("file"), "", 0640);
    makeLink("file", this->path("link"));
    const int result = this->files.setMode(this->url("link"), 0777);
    EXPECT_TRUE(result == 0 || result == EOPNOTSUPP) << result;
    EXPECT_EQ(statusOf(this->path("file")).st_mode, S_IFREG | mode_t{0640});
}

TYPED_TEST_P(FileManagerContract, ReportsABadDescriptorForAMissingItem) {
    EXPECT_EQ(this->files.setMode(this->url("missing"), 0644), EBADF);
    EXPECT_EQ(this->files.setOwner(this->url("missing"), ::geteuid(), ::getegid()), EBADF);
    EXPECT_EQ(this->files.setOwner(this->url("missing/below"), ::geteuid(), ::getegid()), EBADF);
}

REGISTER_TYPED_TEST_SUITE_P(FileManagerContract, CreatesAFolderWithModeLessUmask,
                            CreatesMissingParentsWhenAsked, TakesAnExistingFolderWithIntermediates,
                            RefusesAMissingParentOrAnExistingItemWithoutIntermediates,
                            RefusesToCreateAFolderOverOrBelowAFile, SeesOnlyVisibleEntries,
                            ListsThroughALinkToAFolder, SaysWhyAFolderCannotBeListed,
                            CannotListAnUnreadableFolder, FollowsLinksToTellWhetherAnItemExists,
                            SetsEveryModeBit, NeverChangesTheModeOfALinksTarget,
                            ReportsABadDescriptorForAMissingItem);

}  // namespace PlatformTests
