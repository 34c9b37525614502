#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <string>

#include "FileManagerContract.h"

/// What changes of ownership by every FileManager promise.
namespace PlatformTests {

template <class Files>
class OwnershipContract : public FileManagerContract<Files> {};

TYPED_TEST_SUITE_P(OwnershipContract);

TYPED_TEST_P(OwnershipContract, SetsTheOwnerOfALinkAndNotOfItsTarget) {
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

TYPED_TEST_P(OwnershipContract, ReportsTheErrorOfAForbiddenOwner) {
    makeFile(this->path("file"));
    const auto result = withoutPrivileges([this] { return this->files.setOwner(this->url("file"), 0, 0); });
    EXPECT_EQ(result, std::optional(EPERM));
}

TYPED_TEST_P(OwnershipContract, SetsTheOwnerOfEverythingBelowAFolderButNotOfIt) {
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

TYPED_TEST_P(OwnershipContract, SetsTheOwnerThroughFiveThousandNestedFolders) {
    makeFolder(this->path("top"));
    makeDeepFolders(this->path("top"), 5000);
    int failures = 0;
    const int before = openDescriptors();
    this->files.setOwnerOfContents(this->url("top"), ::geteuid(), ::getegid(),
                                   [&](const Base::URL&, int) { ++failures; });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(openDescriptors(), before);
}

TYPED_TEST_P(OwnershipContract, ReportsEachItemWhoseOwnerCannotBeSetAndGoesOn) {
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

TYPED_TEST_P(OwnershipContract, FindsNothingBelowAnythingButAReadableFolder) {
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

REGISTER_TYPED_TEST_SUITE_P(OwnershipContract, SetsTheOwnerOfALinkAndNotOfItsTarget,
                            ReportsTheErrorOfAForbiddenOwner, SetsTheOwnerOfEverythingBelowAFolderButNotOfIt,
                            SetsTheOwnerThroughFiveThousandNestedFolders,
                            ReportsEachItemWhoseOwnerCannotBeSetAndGoesOn,
                            FindsNothingBelowAnythingButAReadableFolder);

}  // namespace PlatformTests
