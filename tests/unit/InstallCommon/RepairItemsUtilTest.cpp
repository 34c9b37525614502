#include "InstallCommon/RepairItemsUtil.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "support/FakeMac.h"
#include "support/InstallerLine.h"
#include "unit/InstallCommon/CommandArchives.h"

namespace {

using TestSupport::kRepair;
using Lines = std::vector<std::string>;
using Base::URL;
using InstallCommon::RepairItemsUtil;
using TestSupport::CallList;
using TestSupport::FakeMac;
using TestSupport::installerLine;

TEST(Backup, PreparesTheRepairFolderAndThenCopiesTheItemBelowIt) {
    FakeMac mac;
    mac.users.real = 501;
    mac.files.addFile("/a/b");

    RepairItemsUtil::backup(URL::fileURL("/a/b"));

    EXPECT_EQ(mac.calls, (CallList{{"seteuid", 0},
                                   {"create all", kRepair},
                                   {"seteuid", 501},
                                   {"chmod", kRepair, 0},
                                   {"chown", kRepair},
                                   {"seteuid", 0},
                                   {"create all", kRepair + "/a"},
                                   {"seteuid", 501},
                                   {"copy", "/a/b"},
                                   {"chown", kRepair + "/a/b"},
                                   {"chown contents of", kRepair + "/a/b"}}));
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Backup source: /a/b, destination: ") + kRepair + "/a/b",
                                    installerLine("Copy source /a/b; destination: ") + kRepair + "/a/b"}));
}

TEST(Backup, MirrorsTheWholeAbsolutePathOfTheItemBelowTheRepairFolder) {
    FakeMac mac;
    mac.files.addFile("/Library/LaunchDaemons/x.plist");

    RepairItemsUtil::backup(URL::fileURL("/Library/LaunchDaemons/x.plist"));

    EXPECT_TRUE(mac.files.has(kRepair + "/Library/LaunchDaemons/x.plist"));
    EXPECT_TRUE(mac.files.has("/Library/LaunchDaemons/x.plist"));
    EXPECT_EQ(mac.files.at(kRepair + "/Library/LaunchDaemons/x.plist").owner, 0U);
    EXPECT_EQ(mac.files.at(kRepair + "/Library/LaunchDaemons/x.plist").group, 0U);
}

TEST(Backup, LeavesTheRepairFolderWithModeZeroAndOwnerAndGroupZero) {
    FakeMac mac;
    mac.files.addFile("/a/b");
    mac.files.addFolder(kRepair);
    mac.files.nodes[kRepair].owner = 501;
    mac.files.nodes[kRepair].group = 20;

    RepairItemsUtil::backup(URL::fileURL("/a/b"));

    EXPECT_EQ(mac.files.at(kRepair).mode, 0);
    EXPECT_EQ(mac.files.at(kRepair).owner, 0U);
    EXPECT_EQ(mac.files.at(kRepair).group, 0U);
}

TEST(Backup, OfTheSameItemASecondTimeFailsToCopyAndKeepsTheFirstCopy) {
    FakeMac mac;
    mac.files.addFile("/a/b");
    RepairItemsUtil::backup(URL::fileURL("/a/b"));
    mac.files.nodes["/a/b"].mode = 0600;
    mac.calls.clear();
    mac.log.lines.clear();

    RepairItemsUtil::backup(URL::fileURL("/a/b"));

    const std::string copy = kRepair + "/a/b";
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Backup source: /a/b, destination: ") + copy,
                                    installerLine("Copy source /a/b; destination: ") + copy,
                                    installerLine("Error: \"") + copy + "\" exists already"}));
    EXPECT_EQ(mac.calls, (CallList{{"copy", "/a/b"}, {"chown", copy}, {"chown contents of", copy}}));
    EXPECT_EQ(mac.files.at(copy).mode, 0644);
}

TEST(Backup, DoesNotReapplyModeAndOwnerOfTheRepairFolderLaterOn) {
    FakeMac mac;
    mac.files.addFile("/a/b");
    mac.files.addFile("/a/c");
    RepairItemsUtil::backup(URL::fileURL("/a/b"));
    mac.files.nodes[kRepair].mode = 0755;
    mac.files.nodes[kRepair].owner = 501;
    mac.calls.clear();

    RepairItemsUtil::backup(URL::fileURL("/a/c"));

    EXPECT_EQ(mac.files.at(kRepair).mode, 0755);
    EXPECT_EQ(mac.files.at(kRepair).owner, 501U);
    EXPECT_EQ(
        mac.calls,
        (CallList{{"copy", "/a/c"}, {"chown", kRepair + "/a/c"}, {"chown contents of", kRepair + "/a/c"}}));
}

TEST(Backup, DoesNotPrepareARepairFolderAgainThatHasGoneMeanwhile) {
    FakeMac mac;
    mac.files.addFile("/a/b");
    RepairItemsUtil::backup(URL::fileURL("/a/b"));
    mac.files.nodes.erase(kRepair + "/a/b");
    mac.files.nodes.erase(kRepair + "/a");
    mac.files.nodes.erase(kRepair);

    RepairItemsUtil::backup(URL::fileURL("/a/b"));

    // Made again, but only as a parent.
    EXPECT_EQ(mac.files.at(kRepair).mode, 0755);
    EXPECT_EQ(mac.callsOf("chmod"), (CallList{{"chmod", kRepair, 0}}));
}

TEST(Backup, PreparesTheRepairFolderOnceInEveryProcess) {
    for (int process = 0; process < 2; ++process) {
        FakeMac mac;
        mac.files.addFile("/a/b");
        RepairItemsUtil::backup(URL::fileURL("/a/b"));
        EXPECT_EQ(mac.callsOf("chmod"), (CallList{{"chmod", kRepair, 0}}));
    }
}

TEST(Backup, LogsWhatFailsInThePreparationAndGoesOn) {
    FakeMac mac;
    mac.files.addFile("/a/b");
    mac.files.failOn("create all", kRepair, {"No repair folder.", ENOSPC});

    RepairItemsUtil::backup(URL::fileURL("/a/b"));

    const std::string url = "file:///Library/Application%20Support/NORVIK/SNT/Repair";
    const std::string copy = kRepair + "/a/b";
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Error: No repair folder."),
                                    installerLine("Chmod failed for path ") + url + " and set errno to 9",
                                    installerLine("Chown failed for path ") + url + " and set errno to 9.",
                                    installerLine("Backup source: /a/b, destination: ") + copy,
                                    installerLine("Copy source /a/b; destination: ") + copy}));
    EXPECT_TRUE(mac.files.has(copy));
}

TEST(Backup, OfAMissingItemLogsTheFailedCopyAndTheFailedChown) {
    FakeMac mac;

    RepairItemsUtil::backup(URL::fileURL("/a/b"));

    const std::string copy = kRepair + "/a/b";
    EXPECT_EQ(
        mac.log.lines,
        (Lines{installerLine("Backup source: /a/b, destination: ") + copy,
               installerLine("Copy source /a/b; destination: ") + copy,
               installerLine("Error: \"/a/b\" does not exist"),
               installerLine(
                   "Chown failed for path "
                   "file:///Library/Application%20Support/NORVIK/SNT/Repair/a/b and set errno to 9.")}));
}

}  // namespace
