#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "FileManagerContract.h"

/// What removal by every FileManager promises.
namespace PlatformTests {

template <class Files>
class RemovalContract : public FileManagerContract<Files> {};

TYPED_TEST_SUITE_P(RemovalContract);

TYPED_TEST_P(RemovalContract, RemovesAFile) {
    makeFile(this->path("file"), "text", 0);
    EXPECT_FALSE(this->files.removeItem(this->url("file")));
    EXPECT_FALSE(exists(this->path("file")));
}

TYPED_TEST_P(RemovalContract, RemovesALinkAndKeepsItsTarget) {
    makeFolder(this->path("target"));
    makeFile(this->path("target/file"));
    makeLink("target", this->path("link"));
    makeLink("nowhere", this->path("dangling"));
    EXPECT_FALSE(this->files.removeItem(this->url("link")));
    EXPECT_FALSE(this->files.removeItem(this->url("dangling")));
    EXPECT_FALSE(exists(this->path("link")));
    EXPECT_FALSE(exists(this->path("dangling")));
    EXPECT_TRUE(exists(this->path("target/file")));
}

TYPED_TEST_P(RemovalContract, RemovesAFolderWithEverythingInIt) {
    makeFolder(this->path("outside"));
    makeFile(this->path("outside/kept"));
    makeFolder(this->path("top"));
    for (const char* name : {"a", "b", ".hidden", "empty"}) {
        makeFolder(this->path("top/" + std::string(name)));
    }
    makeFolder(this->path("top/a/below"));
    makeFile(this->path("top/a/below/file"));
    makeFile(this->path("top/b/.file"));
    makeFile(this->path("top/.hidden/read only"), "", 0444);
    makeLink(this->path("outside"), this->path("top/a/link"));
    makeLink("..", this->path("top/b/up"));
    ASSERT_EQ(::mkfifo(this->path("top/fifo").c_str(), 0600), 0);
    EXPECT_FALSE(this->files.removeItem(this->url("top")));
    EXPECT_FALSE(exists(this->path("top")));
    EXPECT_TRUE(exists(this->path("outside/kept")));
}

TYPED_TEST_P(RemovalContract, RemovesOddNames) {
    makeFolder(this->path("top"));
    for (const std::string name : {"new\nline", "-rf", "*", " ", "...", "\xff\xfe", "a\\b", "\"", "%2F"}) {
        makeFile(this->path("top/" + name));
        makeFolder(this->path("top/" + name + "d"));
        makeFile(this->path("top/" + name + "d/" + name));
    }
    makeFile(this->path("top/" + std::string(255, 'n')));
    EXPECT_FALSE(this->files.removeItem(this->url("top")));
    EXPECT_FALSE(exists(this->path("top")));
    makeFile(this->path("line\nbreak"));
    EXPECT_FALSE(this->files.removeItem(this->url("line\nbreak")));
    EXPECT_FALSE(exists(this->path("line\nbreak")));
}

TYPED_TEST_P(RemovalContract, RemovesAWideFolder) {
    makeFolder(this->path("top"));
    for (int number = 0; number < 3000; ++number) {
        const std::string name = "top/an entry with a name of some length " + std::to_string(number);
        if (number % 10 == 0) {
            makeFolder(this->path(name));
        } else {
            makeFile(this->path(name), "");
        }
    }
    EXPECT_FALSE(this->files.removeItem(this->url("top")));
    EXPECT_FALSE(exists(this->path("top")));
}

TYPED_TEST_P(RemovalContract, RemovesFiveThousandNestedFoldersWithFewDescriptors) {
    makeFolder(this->path("top"));
    makeDeepFolders(this->path("top"), 5000);
    const auto result = withoutPrivileges([] { return 0; });
    ASSERT_EQ(result, std::optional(0));
    const int before = openDescriptors();
    EXPECT_FALSE(this->files.removeItem(this->url("top")));
    EXPECT_FALSE(exists(this->path("top")));
    EXPECT_EQ(openDescriptors(), before);
}

TYPED_TEST_P(RemovalContract, ReportsAnAbsentItem) {
    const auto error = this->files.removeItem(this->url("missing"));
    ASSERT_TRUE(error);
    EXPECT_EQ(*error,
              (Platform::Error{this->message("missing", "removed: No such file or directory"), ENOENT}));
    EXPECT_EQ(this->files.removeItem(this->url("missing/below"))->code, ENOENT);
    makeFile(this->path("file"));
    EXPECT_EQ(this->files.removeItem(this->url("file/below"))->code, ENOTDIR);
}

TYPED_TEST_P(RemovalContract, RefusesTheRootFolderAndDots) {
    makeFolder(this->path("top"));
    makeFile(this->path("top/kept"));
    EXPECT_EQ(*this->files.removeItem(Base::URL::fileURL("/")),
              (Platform::Error{"\"/\" could not be removed: it is a folder of the system", EPERM}));
    EXPECT_EQ(this->files.removeItem(this->url("top/."))->code, EINVAL);
    makeFolder(this->path("top/below"));
    EXPECT_EQ(this->files.removeItem(this->url("top/below/.."))->code, EINVAL);
    EXPECT_EQ(this->files.removeItem(this->url("top/below/../kept"))->code, EINVAL);
    EXPECT_EQ(this->files.removeItem(this->url("top/./kept"))->code, EINVAL);
    EXPECT_EQ(this->files.createDirectory(this->url("top/../new"), true)->code, EINVAL);
    EXPECT_EQ(this->files.setMode(this->url("top/below/../kept"), 0600), EBADF);
    EXPECT_TRUE(exists(this->path("top/kept")));
}

// The entry's own path is named; everything that can go has gone.
TYPED_TEST_P(RemovalContract, PassesOverWhatCannotBeRemovedAndRemovesTheRest) {
    makeFolder(this->path("top"));
    makeFolder(this->path("top/fixed"));
    makeFile(this->path("top/fixed/file"));
    makeFolder(this->path("top/fixed/below"));
    makeFile(this->path("top/fixed/below/goes"));
    makeFolder(this->path("top/open"));
    makeFile(this->path("top/open/goes"));
    for (const char* each : {"top", "top/fixed", "top/fixed/file", "top/fixed/below", "top/fixed/below/goes",
                             "top/open", "top/open/goes"}) {
        giveToUnprivileged(this->path(each));
    }
    ASSERT_EQ(::chmod(this->path("top/fixed").c_str(), 0555), 0);
    const auto result = withoutPrivileges([this] {
        const auto error = this->files.removeItem(this->url("top"));
        const bool file =
            error && error->description == this->message("top/fixed/file", "removed: Permission denied");
        const bool below =
            error && error->description == this->message("top/fixed/below", "removed: Permission denied");
        return (file || below) && error->code == EACCES ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
    EXPECT_TRUE(exists(this->path("top/fixed/file")));
    EXPECT_TRUE(exists(this->path("top/fixed/below")));
    EXPECT_FALSE(exists(this->path("top/fixed/below/goes")));
    EXPECT_FALSE(exists(this->path("top/open")));
}

TYPED_TEST_P(RemovalContract, ReportsUnreadableFoldersAndRemovesEmptyOnes) {
    makeFolder(this->path("top"));
    makeFolder(this->path("top/closed"));
    makeFile(this->path("top/closed/file"));
    makeFolder(this->path("top/empty"));
    makeFolder(this->path("top/no search"));
    makeFile(this->path("top/no search/file"));
    for (const char* each : {"top", "top/closed", "top/empty", "top/no search"}) {
        giveToUnprivileged(this->path(each));
    }
    ASSERT_EQ(::chmod(this->path("top/closed").c_str(), 0), 0);
    ASSERT_EQ(::chmod(this->path("top/empty").c_str(), 0), 0);
    ASSERT_EQ(::chmod(this->path("top/no search").c_str(), 0400), 0);
    const auto result = withoutPrivileges([this] {
        const auto error = this->files.removeItem(this->url("top"));
        return error ? error->code : 0;
    });
    EXPECT_EQ(result, std::optional(EACCES));
    ASSERT_EQ(::chmod(this->path("top/closed").c_str(), 0700), 0);
    ASSERT_EQ(::chmod(this->path("top/no search").c_str(), 0700), 0);
    EXPECT_TRUE(exists(this->path("top/closed/file")));
    EXPECT_TRUE(exists(this->path("top/no search/file")));
    EXPECT_FALSE(exists(this->path("top/empty")));
}

// The failure lies deeper than folders are held open on the way.
TYPED_TEST_P(RemovalContract, EndsWhenSomethingDeepCannotBeRemoved) {
    makeFolder(this->path("top"));
    std::string folder = this->path("top");
    giveToUnprivileged(folder);
    for (int level = 0; level < 60; ++level) {
        makeFile(folder + "/before");
        makeFile(folder + "/zafter");
        folder += "/d";
        makeFolder(folder);
        giveToUnprivileged(folder);
    }
    makeFile(folder + "/kept");
    ASSERT_EQ(::chmod(folder.c_str(), 0500), 0);
    const auto result = withoutPrivileges([this, &folder] {
        const auto error = this->files.removeItem(this->url("top"));
        return error &&
                       error->description == "\"" + folder + "/kept\" could not be removed: Permission denied"
                   ? 0
                   : 1;
    });
    EXPECT_EQ(result, std::optional(0));
    EXPECT_TRUE(exists(folder + "/kept"));
    EXPECT_FALSE(exists(this->path("top/before")));
    EXPECT_FALSE(exists(this->path("top/zafter")));
    EXPECT_FALSE(exists(this->path("top/d/d/d/d/zafter")));
}

REGISTER_TYPED_TEST_SUITE_P(RemovalContract, RemovesAFile, RemovesALinkAndKeepsItsTarget,
                            RemovesAFolderWithEverythingInIt, RemovesOddNames, RemovesAWideFolder,
                            RemovesFiveThousandNestedFoldersWithFewDescriptors, ReportsAnAbsentItem,
                            RefusesTheRootFolderAndDots, PassesOverWhatCannotBeRemovedAndRemovesTheRest,
                            ReportsUnreadableFoldersAndRemovesEmptyOnes,
                            EndsWhenSomethingDeepCannotBeRemoved);

}  // namespace PlatformTests
