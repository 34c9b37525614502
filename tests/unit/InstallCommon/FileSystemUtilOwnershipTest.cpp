#include "InstallCommon/FileSystemUtil.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;
using Base::URL;
using InstallCommon::FileSystemUtil;
using TestSupport::CallList;
using TestSupport::FakeMac;

// setPermissions

TEST(SetPermissions, SetsTheModeAndLogsNothing) {
    FakeMac mac;
    mac.files.addFile("/a");

    FileSystemUtil::setPermissions(0751, URL::fileURL("/a"));

    EXPECT_EQ(mac.files.at("/a").mode, 0751);
    EXPECT_EQ(mac.calls, (CallList{{"chmod", "/a", 489}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(SetPermissions, ChangesASymbolicLinkAndNotItsTarget) {
    FakeMac mac;
    mac.files.addFile("/target");
    mac.files.addLink("/link", "/target");

    FileSystemUtil::setPermissions(0700, URL::fileURL("/link"));

    EXPECT_EQ(mac.files.at("/link").mode, 0700);
    EXPECT_EQ(mac.files.at("/target").mode, 0644);
    EXPECT_EQ(mac.calls, (CallList{{"chmod", "/link", 448}}));
}

TEST(SetPermissions, LogsErrnoNineForAMissingPathWithTheURLInFullAndNoFullStop) {
    FakeMac mac;

    FileSystemUtil::setPermissions(0644, URL::fileURL("/Library/Application Support/x"));

    EXPECT_EQ(
        mac.log.lines,
        (Lines{installerLine("Chmod failed for path file:///Library/Application%20Support/x and set errno "
                             "to 9")}));
}

TEST(SetPermissions, LogsTheErrnoOfTheCallInDecimal) {
    FakeMac mac;
    mac.files.addFile("/a");
    mac.files.failOn("chmod", "/a", {"", 102});

    FileSystemUtil::setPermissions(0600, URL::fileURL("/a"));

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Chmod failed for path file:///a and set errno to 102")}));
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
    EXPECT_EQ(mac.calls, (CallList{{"chown", "/a"}}));
    EXPECT_EQ(mac.log.lines, Lines{});
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
        (Lines{installerLine("Chown failed for path file:///Library/Application%20Support/x and set errno "
                             "to 9.")}));
}

TEST(SetOwner, LogsTheErrnoOfTheCallInDecimal) {
    FakeMac mac;
    mac.files.addFile("/a");
    mac.files.failOn("chown", "/a", {"", EPERM});

    FileSystemUtil::setOwner(0, 0, URL::fileURL("/a"));

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Chown failed for path file:///a and set errno to 1.")}));
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
    EXPECT_EQ(mac.calls, (CallList{{"chown", "/a"}, {"chown contents of", "/a"}}));
    EXPECT_EQ(mac.log.lines, Lines{});
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
              (Lines{installerLine("Chown failed for path file:///a and set errno to 5."),
                     installerLine("Chown failed for path file:///a/1 and set errno to 1."),
                     installerLine("Chown failed for path file:///a/2%202 and set errno to 9.")}));
    EXPECT_EQ(mac.files.at("/a/3").owner, 0U);
}

TEST(SetOwnerRecursively, LogsAMissingItemOnceAndWalksNothing) {
    FakeMac mac;

    FileSystemUtil::setOwnerRecursively(0, 0, URL::fileURL("/a"));

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Chown failed for path file:///a and set errno to 9.")}));
    EXPECT_EQ(mac.calls, (CallList{{"chown", "/a"}, {"chown contents of", "/a"}}));
}

}  // namespace
