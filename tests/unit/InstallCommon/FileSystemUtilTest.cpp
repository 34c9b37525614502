#include "InstallCommon/FileSystemUtil.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <optional>

#include "support/FakeMac.h"

namespace {

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

    EXPECT_EQ(mac.calls, (CallList{"seteuid 0", "create all /Library/A/B", "seteuid 501"}));
    EXPECT_TRUE(mac.files.has("/Library/A"));
    EXPECT_TRUE(mac.files.has("/Library/A/B"));
    EXPECT_EQ(mac.users.effective, kUser);
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(CreateDirectory, AsksForTheFolderAloneWithoutIntermediateFolders) {
    FakeMac mac;
    mac.files.addFolder("/Library");

    FileSystemUtil::createDirectory(URL::fileURL("/Library/A"), false);

    EXPECT_EQ(mac.calls, (CallList{"seteuid 0", "create /Library/A", "seteuid 0"}));
    EXPECT_TRUE(mac.files.has("/Library/A"));
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(CreateDirectory, IsNotAFailureForAnExistingFolderWithIntermediateFolders) {
    FakeMac mac;
    mac.files.addFolder("/Library/A");

    FileSystemUtil::createDirectory(URL::fileURL("/Library/A"), true);

    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(CreateDirectory, LogsTheErrorsDescriptionAndGoesBackToTheRealUser) {
    FakeMac mac;
    mac.users.real = kUser;
    mac.files.failOn("create", "/a/b", {"No room for \"b\".", ENOSPC});

    FileSystemUtil::createDirectory(URL::fileURL("/a/b"), false);

    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Error: No room for \"b\"."}));
    EXPECT_EQ(mac.calls, (CallList{"seteuid 0", "create /a/b", "seteuid 501"}));
    EXPECT_FALSE(mac.files.has("/a/b"));
}

TEST(CreateDirectory, LogsAnErrorForAMissingParentWithoutIntermediateFolders) {
    FakeMac mac;

    FileSystemUtil::createDirectory(URL::fileURL("/a/b"), false);

    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Error: \"/a/b\" could not be created"}));
}

TEST(CreateDirectory, CreatesTheFolderAlsoWhenTheUserIdCannotBeChanged) {
    FakeMac mac;
    mac.users.real = kUser;
    mac.users.effective = kUser;
    mac.users.refusesChange = true;

    FileSystemUtil::createDirectory(URL::fileURL("/a"), true);

    EXPECT_TRUE(mac.files.has("/a"));
    EXPECT_EQ(mac.calls, (CallList{"seteuid 0", "create all /a", "seteuid 501"}));
    EXPECT_EQ(mac.log.lines, CallList{});
}

// isEmpty

TEST(IsEmpty, IsTrueForAFolderWithNothingInIt) {
    FakeMac mac;
    mac.files.addFolder("/a");

    EXPECT_TRUE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
    EXPECT_EQ(mac.log.lines, CallList{});
    EXPECT_EQ(mac.calls, (CallList{"list /a"}));
}

TEST(IsEmpty, IsTrueForAFolderThatHoldsOnlyHiddenFiles) {
    FakeMac mac;
    mac.files.addFile("/a/.DS_Store");
    mac.files.addFile("/a/.hidden/visible");

    EXPECT_TRUE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(IsEmpty, IsFalseForAFolderThatHoldsAVisibleFile) {
    FakeMac mac;
    mac.files.addFile("/a/.DS_Store");
    mac.files.addFile("/a/b");

    EXPECT_FALSE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(IsEmpty, IsFalseForAFolderThatHoldsAnEmptyFolder) {
    FakeMac mac;
    mac.files.addFolder("/a/b");

    EXPECT_FALSE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
}

TEST(IsEmpty, LogsAnErrorAndIsTrueForAMissingPath) {
    FakeMac mac;

    EXPECT_TRUE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Error: \"/a\" could not be listed"}));
}

TEST(IsEmpty, LogsAnErrorAndIsTrueForAFile) {
    FakeMac mac;
    mac.files.addFile("/a/b");

    EXPECT_TRUE(FileSystemUtil::isEmpty(URL::fileURL("/a/b")));
    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Error: \"/a/b\" could not be listed"}));
}

TEST(IsEmpty, LogsAnErrorAndIsTrueForAFolderThatCannotBeRead) {
    FakeMac mac;
    mac.files.addFile("/a/b");
    mac.files.failOn("list", "/a", {"You may not look into \"a\".", EACCES});

    EXPECT_TRUE(FileSystemUtil::isEmpty(URL::fileURL("/a")));
    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Error: You may not look into \"a\"."}));
}

// remove

TEST(RemoveItem, DoesNothingAndLogsNothingWithoutAURL) {
    FakeMac mac;

    FileSystemUtil::remove(std::nullopt);

    EXPECT_EQ(mac.calls, CallList{});
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(RemoveItem, RemovesAFileAndLogsItsPathUnescaped) {
    FakeMac mac;
    mac.files.addFile("/Library/Application Support/x.plist");

    FileSystemUtil::remove(URL::fileURL("/Library/Application Support/x.plist"));

    EXPECT_FALSE(mac.files.has("/Library/Application Support/x.plist"));
    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Removed at /Library/Application Support/x.plist"}));
    EXPECT_EQ(mac.calls, (CallList{"remove /Library/Application Support/x.plist"}));
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
    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Removed at /a/b"}));
}

TEST(RemoveItem, RemovesASymbolicLinkAndLeavesItsTargetInPlace) {
    FakeMac mac;
    mac.files.addFile("/target/file");
    mac.files.addLink("/link", "/target");

    FileSystemUtil::remove(URL::fileURL("/link"));

    EXPECT_FALSE(mac.files.has("/link"));
    EXPECT_TRUE(mac.files.has("/target/file"));
    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Removed at /link"}));
}

TEST(RemoveItem, LogsAMissingItemAsAFailure) {
    FakeMac mac;

    FileSystemUtil::remove(URL::fileURL("/a"));

    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Error removing: \"/a\" does not exist"}));
}

TEST(RemoveItem, LogsTheErrorsDescriptionAndNothingElse) {
    FakeMac mac;
    mac.files.addFile("/a");
    mac.files.failOn("remove", "/a", {"\"a\" is locked.", EPERM});

    FileSystemUtil::remove(URL::fileURL("/a"));

    EXPECT_TRUE(mac.files.has("/a"));
    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Error removing: \"a\" is locked."}));
}

// setPermissions

TEST(SetPermissions, SetsTheModeAndLogsNothing) {
    FakeMac mac;
    mac.files.addFile("/a");

    FileSystemUtil::setPermissions(0751, URL::fileURL("/a"));

    EXPECT_EQ(mac.files.at("/a").mode, 0751);
    EXPECT_EQ(mac.calls, (CallList{"chmod /a 489"}));
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(SetPermissions, ChangesASymbolicLinkAndNotItsTarget) {
    FakeMac mac;
    mac.files.addFile("/target");
    mac.files.addLink("/link", "/target");

    FileSystemUtil::setPermissions(0700, URL::fileURL("/link"));

    EXPECT_EQ(mac.files.at("/link").mode, 0700);
    EXPECT_EQ(mac.files.at("/target").mode, 0644);
    EXPECT_EQ(mac.calls, (CallList{"chmod /link 448"}));
}

TEST(SetPermissions, LogsErrnoNineForAMissingPathWithTheURLInFullAndNoFullStop) {
    FakeMac mac;

    FileSystemUtil::setPermissions(0644, URL::fileURL("/Library/Application Support/x"));

    EXPECT_EQ(
        mac.log.lines,
        (CallList{
            "[SNTM Installer] Chmod failed for path file:///Library/Application%20Support/x and set errno "
            "to 9"}));
}

TEST(SetPermissions, LogsTheErrnoOfTheCallInDecimal) {
    FakeMac mac;
    mac.files.addFile("/a");
    mac.files.failOn("chmod", "/a", {"", 102});

    FileSystemUtil::setPermissions(0600, URL::fileURL("/a"));

    EXPECT_EQ(mac.log.lines,
              (CallList{"[SNTM Installer] Chmod failed for path file:///a and set errno to 102"}));
    EXPECT_EQ(mac.files.at("/a").mode, 0644);
}

// setOwner

TEST(SetOwner, SetsOwnerAndGroupOfTheItemAlone) {
    FakeMac mac;
    mac.files.addFile("/a/b");

    FileSystemUtil::setOwner(7, 8, URL::fileURL("/a"));

    EXPECT_EQ(mac.files.at("/a").owner, 7U);
    EXPECT_EQ(mac.files.at("/a").group, 8U);
    EXPECT_EQ(mac.files.at("/a/b").owner, 501U);
    EXPECT_EQ(mac.files.at("/a/b").group, 20U);
    EXPECT_EQ(mac.calls, (CallList{"chown /a"}));
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(SetOwner, ChangesASymbolicLinkAndNotItsTarget) {
    FakeMac mac;
    mac.files.addFile("/target");
    mac.files.addLink("/link", "/target");

    FileSystemUtil::setOwner(0, 0, URL::fileURL("/link"));

    EXPECT_EQ(mac.files.at("/link").owner, 0U);
    EXPECT_EQ(mac.files.at("/link").group, 0U);
    EXPECT_EQ(mac.files.at("/target").owner, 501U);
    EXPECT_EQ(mac.files.at("/target").group, 20U);
}

TEST(SetOwner, LogsErrnoNineForAMissingPathWithTheURLInFullAndAFullStop) {
    FakeMac mac;

    FileSystemUtil::setOwner(0, 0, URL::fileURL("/Library/Application Support/x"));

    EXPECT_EQ(
        mac.log.lines,
        (CallList{
            "[SNTM Installer] Chown failed for path file:///Library/Application%20Support/x and set errno "
            "to 9."}));
}

TEST(SetOwner, LogsTheErrnoOfTheCallInDecimal) {
    FakeMac mac;
    mac.files.addFile("/a");
    mac.files.failOn("chown", "/a", {"", EPERM});

    FileSystemUtil::setOwner(0, 0, URL::fileURL("/a"));

    EXPECT_EQ(mac.log.lines,
              (CallList{"[SNTM Installer] Chown failed for path file:///a and set errno to 1."}));
}

// setOwnerRecursively

TEST(SetOwnerRecursively, StartsWithTheItemAndGoesOnWithEverythingBelowHiddenItemsAndLinksIncluded) {
    FakeMac mac;
    mac.files.addFile("/outside/file");
    mac.files.addFile("/a/.hidden/x");
    mac.files.addFile("/a/b/c");
    mac.files.addLink("/a/link", "/outside");

    FileSystemUtil::setOwnerRecursively(3, 4, URL::fileURL("/a"));

    for (const char* path : {"/a", "/a/.hidden", "/a/.hidden/x", "/a/b", "/a/b/c", "/a/link"}) {
        EXPECT_EQ(mac.files.at(path).owner, 3U) << path;
        EXPECT_EQ(mac.files.at(path).group, 4U) << path;
    }
    EXPECT_EQ(mac.files.at("/outside/file").owner, 501U);
    EXPECT_EQ(mac.calls, (CallList{"chown /a", "chown contents of /a"}));
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(SetOwnerRecursively, LogsEachFailureWithAFullStopAndNeverStopsTheWalk) {
    FakeMac mac;
    mac.files.addFile("/a/1");
    mac.files.addFile("/a/2 2");
    mac.files.addFile("/a/3");
    mac.files.failOn("chown", "/a", {"", EIO});
    mac.files.ownerFailures = {{"/a/1", EPERM}, {"/a/2 2", EBADF}};

    FileSystemUtil::setOwnerRecursively(0, 0, URL::fileURL("/a"));

    EXPECT_EQ(mac.log.lines,
              (CallList{"[SNTM Installer] Chown failed for path file:///a and set errno to 5.",
                        "[SNTM Installer] Chown failed for path file:///a/1 and set errno to 1.",
                        "[SNTM Installer] Chown failed for path file:///a/2%202 and set errno to 9."}));
    EXPECT_EQ(mac.files.at("/a/3").owner, 0U);
}

TEST(SetOwnerRecursively, LogsAMissingItemOnceAndWalksNothing) {
    FakeMac mac;

    FileSystemUtil::setOwnerRecursively(0, 0, URL::fileURL("/a"));

    EXPECT_EQ(mac.log.lines,
              (CallList{"[SNTM Installer] Chown failed for path file:///a and set errno to 9."}));
    EXPECT_EQ(mac.calls, (CallList{"chown /a", "chown contents of /a"}));
}

// copy

TEST(CopyItem, LogsBothPathsCopiesAndGivesTheCopyToRootAndWheel) {
    FakeMac mac;
    mac.files.addFile("/from/x y/inner");
    mac.files.addFolder("/to");

    FileSystemUtil::copy(URL::fileURL("/from/x y"), URL::fileURL("/to/x y"));

    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Copy source /from/x y; destination: /to/x y"}));
    EXPECT_EQ(mac.calls, (CallList{"copy /from/x y", "chown /to/x y", "chown contents of /to/x y"}));
    EXPECT_EQ(mac.files.existenceTests, (CallList{"/to"}));
    for (const char* path : {"/to/x y", "/to/x y/inner"}) {
        EXPECT_EQ(mac.files.at(path).owner, 0U) << path;
        EXPECT_EQ(mac.files.at(path).group, 0U) << path;
    }
    EXPECT_EQ(mac.files.at("/from/x y/inner").owner, 501U);
}

TEST(CopyItem, CreatesAllMissingParentFoldersFirstUnderUserIdZero) {
    FakeMac mac;
    mac.users.real = kUser;
    mac.files.addFile("/from");

    FileSystemUtil::copy(URL::fileURL("/from"), URL::fileURL("/p/q/r"));

    EXPECT_EQ(mac.calls, (CallList{"seteuid 0", "create all /p/q", "seteuid 501", "copy /from",
                                   "chown /p/q/r", "chown contents of /p/q/r"}));
    EXPECT_TRUE(mac.files.has("/p"));
    EXPECT_TRUE(mac.files.has("/p/q"));
    EXPECT_TRUE(mac.files.has("/p/q/r"));
    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Copy source /from; destination: /p/q/r"}));
}

TEST(CopyItem, OntoAnExistingDestinationLogsAnErrorLeavesItAsItWasAndStillChownsItThroughout) {
    FakeMac mac;
    mac.files.addFile("/from/new");
    mac.files.addFile("/to/old");
    mac.files.nodes["/to/old"].mode = 0600;
    mac.files.nodes["/to"].owner = 501;

    FileSystemUtil::copy(URL::fileURL("/from"), URL::fileURL("/to"));

    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Copy source /from; destination: /to",
                                       "[SNTM Installer] Error: \"/to\" exists already"}));
    EXPECT_FALSE(mac.files.has("/to/new"));
    EXPECT_EQ(mac.files.at("/to/old").mode, 0600);
    for (const char* path : {"/to", "/to/old"}) {
        EXPECT_EQ(mac.files.at(path).owner, 0U) << path;
        EXPECT_EQ(mac.files.at(path).group, 0U) << path;
    }
}

TEST(CopyItem, ThatFailsIsStillFollowedByTheChown) {
    FakeMac mac;
    mac.files.addFolder("/to");

    FileSystemUtil::copy(URL::fileURL("/from"), URL::fileURL("/to/x"));

    EXPECT_EQ(mac.calls, (CallList{"copy /from", "chown /to/x", "chown contents of /to/x"}));
    EXPECT_EQ(mac.log.lines,
              (CallList{"[SNTM Installer] Copy source /from; destination: /to/x",
                        "[SNTM Installer] Error: \"/from\" does not exist",
                        "[SNTM Installer] Chown failed for path file:///to/x and set errno to 9."}));
}

TEST(CopyItem, IsTriedAlsoWhenTheParentCouldNotBeCreated) {
    FakeMac mac;
    mac.files.addFile("/from");
    mac.files.failOn("create all", "/p", {"No folder \"p\".", EACCES});
    mac.files.failOn("copy", "/from", {"No folder to copy to.", ENOENT});

    FileSystemUtil::copy(URL::fileURL("/from"), URL::fileURL("/p/x"));

    EXPECT_EQ(mac.calls, (CallList{"seteuid 0", "create all /p", "seteuid 0", "copy /from", "chown /p/x",
                                   "chown contents of /p/x"}));
    EXPECT_EQ(
        mac.log.lines,
        (CallList{"[SNTM Installer] Copy source /from; destination: /p/x",
                  "[SNTM Installer] Error: No folder \"p\".", "[SNTM Installer] Error: No folder to copy to.",
                  "[SNTM Installer] Chown failed for path file:///p/x and set errno to 9."}));
}

}  // namespace
