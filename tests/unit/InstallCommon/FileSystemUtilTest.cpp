#include "InstallCommon/FileSystemUtil.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <optional>

#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;
using Base::URL;
using InstallCommon::FileSystemUtil;
using TestSupport::CallList;
using TestSupport::FakeMac;

constexpr std::uint32_t kUser = 501;

// createDirectory

TEST(CreateDirectory, CreatesTheFolderUnderUserIdZeroAndGoesBackToTheRealUser) {
    FakeMac mac;
    mac.users.real = kUser;
    mac.users.effective = kUser;

    FileSystemUtil::createDirectory(URL::fileURL("/Library/A/B"), true);

    EXPECT_EQ(mac.calls, (CallList{{"seteuid", 0}, {"create all", "/Library/A/B"}, {"seteuid", 501}}));
    EXPECT_TRUE(mac.files.has("/Library/A"));
    EXPECT_TRUE(mac.files.has("/Library/A/B"));
    EXPECT_EQ(mac.users.effective, kUser);
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(CreateDirectory, AsksForTheFolderAloneWithoutIntermediateFolders) {
    FakeMac mac;
    mac.files.addFolder("/Library");

    FileSystemUtil::createDirectory(URL::fileURL("/Library/A"), false);

    EXPECT_EQ(mac.calls, (CallList{{"seteuid", 0}, {"create", "/Library/A"}, {"seteuid", 0}}));
    EXPECT_TRUE(mac.files.has("/Library/A"));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(CreateDirectory, IsNotAFailureForAnExistingFolderWithIntermediateFolders) {
    FakeMac mac;
    mac.files.addFolder("/Library/A");

    FileSystemUtil::createDirectory(URL::fileURL("/Library/A"), true);

    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(CreateDirectory, LogsTheErrorsDescriptionAndGoesBackToTheRealUser) {
    FakeMac mac;
    mac.users.real = kUser;
    mac.files.failOn("create", "/a/b", {"No room for \"b\".", ENOSPC});

    FileSystemUtil::createDirectory(URL::fileURL("/a/b"), false);

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Error: No room for \"b\".")}));
    EXPECT_EQ(mac.calls, (CallList{{"seteuid", 0}, {"create", "/a/b"}, {"seteuid", 501}}));
    EXPECT_FALSE(mac.files.has("/a/b"));
}

TEST(CreateDirectory, LogsAnErrorForAMissingParentWithoutIntermediateFolders) {
    FakeMac mac;

    FileSystemUtil::createDirectory(URL::fileURL("/a/b"), false);

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Error: \"/a/b\" could not be created")}));
}

TEST(CreateDirectory, CreatesTheFolderAlsoWhenTheUserIdCannotBeChanged) {
    FakeMac mac;
    mac.users.real = kUser;
    mac.users.effective = kUser;
    mac.users.refusesChange = true;

    FileSystemUtil::createDirectory(URL::fileURL("/a"), true);

    EXPECT_TRUE(mac.files.has("/a"));
    EXPECT_EQ(mac.calls, (CallList{{"seteuid", 0}, {"create all", "/a"}, {"seteuid", 501}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

// isEmpty

TEST(IsEmpty, IsTrueForAFolderWithNothingInIt) {
    FakeMac mac;
    mac.files.addFolder("/a");

    EXPECT_TRUE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
    EXPECT_EQ(mac.log.lines, Lines{});
    EXPECT_EQ(mac.calls, (CallList{{"list", "/a"}}));
}

TEST(IsEmpty, IsTrueForAFolderThatHoldsOnlyHiddenFiles) {
    FakeMac mac;
    mac.files.addFile("/a/.DS_Store");
    mac.files.addFile("/a/.hidden/visible");

    EXPECT_TRUE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(IsEmpty, IsFalseForAFolderThatHoldsAVisibleFile) {
    FakeMac mac;
    mac.files.addFile("/a/.DS_Store");
    mac.files.addFile("/a/b");

    EXPECT_FALSE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(IsEmpty, IsFalseForAFolderThatHoldsAnEmptyFolder) {
    FakeMac mac;
    mac.files.addFolder("/a/b");

    EXPECT_FALSE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
}

TEST(IsEmpty, LogsAnErrorAndIsTrueForAMissingPath) {
    FakeMac mac;

    EXPECT_TRUE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Error: \"/a\" could not be listed")}));
}

TEST(IsEmpty, LogsAnErrorAndIsTrueForAFile) {
    FakeMac mac;
    mac.files.addFile("/a/b");

    EXPECT_TRUE(FileSystemUtil::isEmpty(URL::fileURL("/a/b")));
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Error: \"/a/b\" could not be listed")}));
}

TEST(IsEmpty, LogsAnErrorAndIsTrueForAFolderThatCannotBeRead) {
    FakeMac mac;
    mac.files.addFile("/a/b");
    mac.files.failOn("list", "/a", {"You may not look into \"a\".", EACCES});

    EXPECT_TRUE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Error: You may not look into \"a\".")}));
}

// remove

TEST(RemoveItem, DoesNothingAndLogsNothingWithoutAURL) {
    FakeMac mac;

    FileSystemUtil::remove(std::nullopt);

    EXPECT_EQ(mac.calls, CallList{});
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(RemoveItem, RemovesAFileAndLogsItsPathUnescaped) {
    FakeMac mac;
    mac.files.addFile("/Library/Application Support/x.plist");

    FileSystemUtil::remove(URL::fileURL("/Library/Application Support/x.plist"));

    EXPECT_FALSE(mac.files.has("/Library/Application Support/x.plist"));
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Removed at /Library/Application Support/x.plist")}));
    EXPECT_EQ(mac.calls, (CallList{{"remove", "/Library/Application Support/x.plist"}}));
}

TEST(RemoveItem, RemovesANonEmptyFolderWholeWithOneLine) {
    FakeMac mac;
    mac.files.addFile("/a/b/c");
    mac.files.addFile("/a/b/.hidden");
    mac.files.addFile("/a/beside");

    FileSystemUtil::remove(URL::fileURL("/a/b"));

    EXPECT_FALSE(mac.files.has("/a/b"));
    EXPECT_FALSE(mac.files.has("/a/b/c"));
    EXPECT_FALSE(mac.files.has("/a/b/.hidden"));
    EXPECT_TRUE(mac.files.has("/a/beside"));
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Removed at /a/b")}));
}

TEST(RemoveItem, RemovesASymbolicLinkAndLeavesItsTargetInPlace) {
    FakeMac mac;
    mac.files.addFile("/target/file");
    mac.files.addLink("/link", "/target");

    FileSystemUtil::remove(URL::fileURL("/link"));

    EXPECT_FALSE(mac.files.has("/link"));
    EXPECT_TRUE(mac.files.has("/target/file"));
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Removed at /link")}));
}

TEST(RemoveItem, LogsAMissingItemAsAFailure) {
    FakeMac mac;

    FileSystemUtil::remove(URL::fileURL("/a"));

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Error removing: \"/a\" does not exist")}));
}

TEST(RemoveItem, LogsTheErrorsDescriptionAndNothingElse) {
    FakeMac mac;
    mac.files.addFile("/a");
    mac.files.failOn("remove", "/a", {"\"a\" is locked.", EPERM});

    FileSystemUtil::remove(URL::fileURL("/a"));

    EXPECT_TRUE(mac.files.has("/a"));
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Error removing: \"a\" is locked.")}));
}

}  // namespace
