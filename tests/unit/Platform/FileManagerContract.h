#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <set>

#include "Platform/FileManager.h"
#include "support/Scratch.h"

/// What every FileManager promises, for any implementation that works on the real file system:
///   INSTANTIATE_TYPED_TEST_SUITE_P(Linux, FileManagerContract, LinuxFileManager);
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

TYPED_TEST_P(FileManagerContract, RemovesAFile) {
    makeFile(this->path("file"), "text", 0);
    EXPECT_FALSE(this->files.removeItem(this->url("file")));
    EXPECT_FALSE(exists(this->path("file")));
}

TYPED_TEST_P(FileManagerContract, RemovesALinkAndKeepsItsTarget) {
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

TYPED_TEST_P(FileManagerContract, RemovesAFolderWithEverythingInIt) {
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

TYPED_TEST_P(FileManagerContract, RemovesOddNames) {
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

TYPED_TEST_P(FileManagerContract, RemovesAWideFolder) {
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

TYPED_TEST_P(FileManagerContract, RemovesFiveThousandNestedFoldersWithFewDescriptors) {
    makeFolder(this->path("top"));
    makeDeepFolders(this->path("top"), 5000);
    const auto result = withoutPrivileges([] { return 0; });
    ASSERT_EQ(result, std::optional(0));
    const int before = openDescriptors();
    EXPECT_FALSE(this->files.removeItem(this->url("top")));
    EXPECT_FALSE(exists(this->path("top")));
    EXPECT_EQ(openDescriptors(), before);
}

TYPED_TEST_P(FileManagerContract, ReportsAnAbsentItem) {
    const auto error = this->files.removeItem(this->url("missing"));
    ASSERT_TRUE(error);
    EXPECT_EQ(*error,
              (Platform::Error{this->message("missing", "removed: No such file or directory"), ENOENT}));
    EXPECT_EQ(this->files.removeItem(this->url("missing/below"))->code, ENOENT);
    makeFile(this->path("file"));
    EXPECT_EQ(this->files.removeItem(this->url("file/below"))->code, ENOTDIR);
}

TYPED_TEST_P(FileManagerContract, RefusesTheRootFolderAndDots) {
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
TYPED_TEST_P(FileManagerContract, PassesOverWhatCannotBeRemovedAndRemovesTheRest) {
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

TYPED_TEST_P(FileManagerContract, ReportsUnreadableFoldersAndRemovesEmptyOnes) {
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
TYPED_TEST_P(FileManagerContract, EndsWhenSomethingDeepCannotBeRemoved) {
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

TYPED_TEST_P(FileManagerContract, SetsTheOwnerOfALinkAndNotOfItsTarget) {
    makeFile(this->path("file"));
    makeLink("file", this->path("link"));
    const bool root = ::geteuid() == 0;
    const uid_t owner = root ? 1234 : ::geteuid();
    const gid_t group = root ? 4321 : ::getegid();
    EXPECT_EQ(this->files.setOwner(this->url("link"), owner, group), 0);
    EXPECT_EQ(statusOf(this->path("link")).st_uid, owner);
    EXPECT_EQ(statusOf(this->path("link")).st_gid, group);
    EXPECT_EQ(statusOf(this->path("file")).st_uid, ::geteuid());
}

TYPED_TEST_P(FileManagerContract, ReportsTheErrorOfAForbiddenOwner) {
    makeFile(this->path("file"));
    const auto result = withoutPrivileges([this] { return this->files.setOwner(this->url("file"), 0, 0); });
    EXPECT_EQ(result, std::optional(EPERM));
}

TYPED_TEST_P(FileManagerContract, SetsTheOwnerOfEverythingBelowAFolderButNotOfIt) {
    makeFolder(this->path("outside"));
    makeFile(this->path("outside/file"));
    makeFolder(this->path("top"));
    makeFolder(this->path("top/.hidden"));
    makeFile(this->path("top/.hidden/.file"));
    makeLink(this->path("outside"), this->path("top/link"));
    makeDeepFolders(this->path("top/.hidden"), 40);
    const bool root = ::geteuid() == 0;
    const uid_t owner = root ? 1234 : ::geteuid();
    const gid_t group = root ? 4321 : ::getegid();
    int failures = 0;
    this->files.setOwnerOfContents(this->url("top"), owner, group,
                                   [&](const Base::URL&, int) { ++failures; });
    EXPECT_EQ(failures, 0);
    std::string deepest = "top/.hidden";
    for (int level = 0; level < 40; ++level) {
        deepest += "/d";
        EXPECT_EQ(statusOf(this->path(deepest)).st_uid, owner);
    }
    for (const std::string& each : {std::string("top/.hidden"), std::string("top/.hidden/.file"),
                                    std::string("top/link"), deepest + "/leaf"}) {
        EXPECT_EQ(statusOf(this->path(each)).st_uid, owner) << each;
        EXPECT_EQ(statusOf(this->path(each)).st_gid, group) << each;
    }
    for (const char* each : {"top", "outside", "outside/file"}) {
        EXPECT_EQ(statusOf(this->path(each)).st_uid, ::geteuid()) << each;
    }
}

TYPED_TEST_P(FileManagerContract, SetsTheOwnerThroughFiveThousandNestedFolders) {
    makeFolder(this->path("top"));
    makeDeepFolders(this->path("top"), 5000);
    int failures = 0;
    const int before = openDescriptors();
    this->files.setOwnerOfContents(this->url("top"), ::geteuid(), ::getegid(),
                                   [&](const Base::URL&, int) { ++failures; });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(openDescriptors(), before);
}

TYPED_TEST_P(FileManagerContract, ReportsEachItemWhoseOwnerCannotBeSetAndGoesOn) {
    makeFolder(this->path("top"));
    makeFolder(this->path("top/folder"));
    makeFile(this->path("top/folder/file"));
    makeFile(this->path("top/other"));
    const auto result = withoutPrivileges([this] {
        std::set<std::string> failed;
        bool allForbidden = true;
        this->files.setOwnerOfContents(this->url("top"), 0, 0, [&](const Base::URL& item, int error) {
            failed.insert(item.path());
            allForbidden = allForbidden && error == EPERM;
        });
        const std::set<std::string> expected{this->path("top/folder"), this->path("top/folder/file"),
                                             this->path("top/other")};
        return allForbidden && failed == expected ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
}

TYPED_TEST_P(FileManagerContract, FindsNothingBelowAnythingButAReadableFolder) {
    makeFile(this->path("file"));
    makeFolder(this->path("folder"));
    makeFile(this->path("folder/file"));
    makeLink("folder", this->path("link"));
    makeFolder(this->path("closed"), 0);
    const auto result = withoutPrivileges([this] {
        int calls = 0;
        for (const char* each : {"file", "link", "missing", "closed"}) {
            this->files.setOwnerOfContents(this->url(each), 0, 0, [&](const Base::URL&, int) { ++calls; });
        }
        return calls;
    });
    EXPECT_EQ(result, std::optional(0));
}

REGISTER_TYPED_TEST_SUITE_P(
    FileManagerContract, CreatesAFolderWithModeLessUmask, CreatesMissingParentsWhenAsked,
    TakesAnExistingFolderWithIntermediates, RefusesAMissingParentOrAnExistingItemWithoutIntermediates,
    RefusesToCreateAFolderOverOrBelowAFile, SeesOnlyVisibleEntries, ListsThroughALinkToAFolder,
    SaysWhyAFolderCannotBeListed, CannotListAnUnreadableFolder, RemovesAFile, RemovesALinkAndKeepsItsTarget,
    RemovesAFolderWithEverythingInIt, RemovesOddNames, RemovesAWideFolder,
    RemovesFiveThousandNestedFoldersWithFewDescriptors, ReportsAnAbsentItem, RefusesTheRootFolderAndDots,
    PassesOverWhatCannotBeRemovedAndRemovesTheRest, ReportsUnreadableFoldersAndRemovesEmptyOnes,
    EndsWhenSomethingDeepCannotBeRemoved, FollowsLinksToTellWhetherAnItemExists, SetsEveryModeBit,
    NeverChangesTheModeOfALinksTarget, ReportsABadDescriptorForAMissingItem,
    SetsTheOwnerOfALinkAndNotOfItsTarget, ReportsTheErrorOfAForbiddenOwner,
    SetsTheOwnerOfEverythingBelowAFolderButNotOfIt, SetsTheOwnerThroughFiveThousandNestedFolders,
    ReportsEachItemWhoseOwnerCannotBeSetAndGoesOn, FindsNothingBelowAnythingButAReadableFolder);

}  // namespace PlatformTests
