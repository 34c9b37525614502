#include "Look.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "InspectedMac.h"

namespace InspectUnitTests {

namespace {

using Inventory::Place;
using Inventory::Role;
using Inventory::RunningProcess;
using Inventory::Version;
using Platform::ItemKind;
using TestSupport::CallList;
using Lines = std::vector<std::string>;

const std::string kTool = "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper";

class Look : public testing::Test {
  protected:
    InspectedMac mac;
};

TEST_F(Look, FindsNothingOnAMacWithoutTheProduct) {
    EXPECT_EQ(mac.look(), Inventory::Inventory{});
}

TEST_F(Look, AsksLaunchctlToPrintAndNothingElse) {
    mac.addJob("system", "com.norvik.InstallerHelper");
    static_cast<void>(mac.look());
    EXPECT_EQ(mac.mac.callsOf("launch"),
              (CallList{{"launch", "/bin/launchctl print system"},
                        {"launch", "/bin/launchctl print system/com.norvik.InstallerHelper"},
                        {"launch", "/bin/launchctl print-disabled system"},
                        {"launch", "/bin/launchctl print gui/501"},
                        {"launch", "/bin/launchctl print-disabled gui/501"},
                        {"launch", "/bin/launchctl print gui/502"}}));
    EXPECT_EQ(mac.mac.log.lines, Lines{});
}

// A table of jobs is longer than a pipe takes.
TEST_F(Look, ReadsWhatLaunchctlWritesBeforeItWaits) {
    static_cast<void>(mac.look());
    EXPECT_EQ(
        CallList(mac.mac.calls.begin(), mac.mac.calls.begin() + 4),
        (CallList{{"launch", "/bin/launchctl print system"}, {"read output"}, {"read error"}, {"wait"}}));
}

TEST_F(Look, TellsWhatItemsAreAndToWhichGenerationTheyBelong) {
    mac.files.addFolder(kConsole);
    mac.files.add("/Library/Application Support/NORVIK/SNT/FileAccessDaemon");
    mac.files.add("/Library/Services/Scan with Sentrel.workflow", ItemKind::link);
    mac.files.add("/Library/LaunchAgents/com.norvik.TrayMenu.plist", ItemKind::other);
    mac.files.add(kTool);
    mac.files.addFolder("/usr/local/lib/swift");
    const auto found = mac.look();
    Lines places;
    for (const Place& place : found.places) {
        places.push_back(place.paths.at(0) + " " + std::to_string(static_cast<int>(place.kind)) + " " +
                         std::string(nameOf(place.role)) +
                         (place.generations.empty() ? "" : " " + place.generations.at(0)));
    }
    EXPECT_EQ(places, (Lines{"/Applications/Sentrel.app 1 application current",
                             "/Library/Services/Scan with Sentrel.workflow 2 Finder service",
                             "/Library/Application Support/NORVIK/SNT/FileAccessDaemon 0 daemon snt-plain",
                             "/Library/LaunchAgents/com.norvik.TrayMenu.plist 3 launchd job",
                             "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper 0 helper tool",
                             "/Library/Application Support/NORVIK/SNT 1 data",
                             "/Library/Application Support/NORVIK 1 data"}));
    EXPECT_TRUE(found.hasConsole);
    EXPECT_TRUE(found.hasInstallationFolder);
    EXPECT_TRUE(found.hasRuntimeSupport);
    EXPECT_EQ(found.version, std::nullopt);
    EXPECT_EQ(found.blind, Lines{});
}

TEST_F(Look, TakesAFolderInADaemonsPlaceForData) {
    mac.files.addFolder("/Library/Application Support/NORVIK/SNT/FileAccessDaemon");
    const auto found = mac.look();
    ASSERT_EQ(found.places.size(), 3U);
    EXPECT_EQ(found.places[0].role, Role::data);
    EXPECT_EQ(found.places[0].generations, Lines{});
}

TEST_F(Look, ReadsTheConsolesVersion) {
    mac.files.addFolder(kConsole);
    mac.mac.bundles.install(kConsole, "6.4", "640");
    EXPECT_EQ(mac.look().version, (Version{"6.4", "640"}));
}

TEST_F(Look, TakesHalfAVersionForNone) {
    mac.files.addFolder(kConsole);
    mac.mac.bundles.infoByPath[kConsole] = {{"CFBundleShortVersionString", "6.4"}};
    EXPECT_EQ(mac.look().version, std::nullopt);
    mac.mac.bundles.infoByPath[kConsole] = {{"CFBundleVersion", "640"}};
    EXPECT_EQ(mac.look().version, std::nullopt);
}

TEST_F(Look, CountsTwoSpellingsOfOneItemOnce) {
    mac.files.addFolder("/Applications/Norvik");
    mac.files.addSpelling("/Applications/NORVIK", "/Applications/Norvik");
    const auto found = mac.look();
    ASSERT_EQ(found.places.size(), 1U);
    EXPECT_EQ(found.places[0].paths, (Lines{"/Applications/Norvik", "/Applications/NORVIK"}));
}

// Taking one of them away leaves the other.
TEST_F(Look, CountsTwoNamesOfOneFileTwice) {
    mac.files.add(kTool);
    mac.files.addSpelling("/Library/PrivilegedHelperTools/com.norvik.UninstallerHelper", kTool);
    EXPECT_EQ(mac.look().places.size(), 2U);
}

TEST_F(Look, SaysWhichItemsItCouldNotLookAt) {
    mac.files.failures[kConsole] = {"\"/Applications/Sentrel.app\" could not be looked at: Permission denied",
                                    EACCES};
    mac.files.failures[kTool] = {"no folder on the way", ENOTDIR};
    EXPECT_EQ(mac.look().blind,
              (Lines{"\"/Applications/Sentrel.app\" could not be looked at: Permission denied"}));
}

TEST_F(Look, FindsProcessesByThePlaceOfTheirProgram) {
    auto& processes = mac.mac.processes.processes;
    processes.push_back({7, 501, "anything", kConsole + "/Contents/MacOS/Sentrel"});
    processes.push_back({8, 0, "com.norvik.InstallerHelper", kTool});
    processes.push_back({9, 0, "Sentrel", "/Applications/Sentrel.app2/Sentrel"});
    processes.push_back({10, 0, "Sentrel", "/opt/Sentrel"});
    const auto found = mac.look();
    EXPECT_EQ(found.blind, Lines{});
    EXPECT_EQ(found.processes,
              (std::vector<RunningProcess>{{7, 501, kConsole + "/Contents/MacOS/Sentrel"}, {8, 0, kTool}}));
}

TEST_F(Look, DoesNotFindItself) {
    mac.mac.processes.processes.push_back({99, 0, "Sentrel", kConsole + "/Contents/MacOS/Sentrel"});
    const auto found = Inventory::look({mac.files, mac.extensions, 99, ""});
    EXPECT_TRUE(found.processes.empty());
}

TEST_F(Look, SaysWhichProcessesMayBeTheProducts) {
    auto& processes = mac.mac.processes.processes;
    processes.push_back({7, 0, "com.norvik.SupportPrivilegedHelper", ""});
    processes.push_back({8, 0, "other", ""});
    mac.mac.processes.vanished = {9};
    EXPECT_EQ(mac.look().blind,
              (Lines{"process 7 is called \"com.norvik.SupportPrivilegedHelper\", but its program could not "
                     "be looked up"}));
}

TEST_F(Look, SaysThatProcessesCouldNotBeListed) {
    mac.mac.processes.refusesToList = true;
    EXPECT_EQ(mac.look().blind, Lines{"the processes could not be listed"});
}

TEST_F(Look, FindsTheLoadedExtension) {
    mac.extensions.loaded = {"com.norvik.kext.FileAccessFilter", "com.example.kext"};
    EXPECT_EQ(mac.look().extensions, Lines{"com.norvik.kext.FileAccessFilter"});
    mac.extensions.failure = Platform::Error{"no answer", 0};
    EXPECT_EQ(mac.look().blind, Lines{"no answer"});
}

TEST_F(Look, LooksOnlyAtFilesInAFolder) {
    mac.files.addFolder(kConsole);
    mac.addJob("system", "com.norvik.Agent");
    mac.extensions.loaded = {"com.norvik.kext.FileAccessFilter"};
    mac.mac.bundles.install("/Volumes/Disk" + kConsole, "6.3", "630");
    const auto found = mac.look("/Volumes/Disk");
    EXPECT_EQ(found.root, "/Volumes/Disk");
    EXPECT_EQ(found.places.size(), 1U);
    EXPECT_EQ(found.version, (Version{"6.3", "630"}));
    EXPECT_TRUE(found.jobs.empty());
    EXPECT_TRUE(found.extensions.empty());
    EXPECT_EQ(found.notLookedAt,
              (Lines{"jobs", "processes", "loaded kernel extensions", "launchd overrides"}));
    EXPECT_EQ(mac.mac.callsOf("launch"), CallList{});
}

TEST(SettledLook, LooksUntilTwoLooksAgree) {
    int looks = 0;
    const auto found = Inventory::settledLook([&looks] {
        Inventory::Inventory inventory;
        inventory.hasConsole = ++looks == 2;
        return inventory;
    });
    EXPECT_EQ(looks, 4);
    EXPECT_EQ(found, Inventory::Inventory{});
}

TEST(SettledLook, SaysThatAMacNeverHeldStill) {
    int looks = 0;
    const auto found = Inventory::settledLook([&looks] {
        Inventory::Inventory inventory;
        inventory.hasConsole = ++looks % 2 == 0;
        return inventory;
    });
    EXPECT_EQ(looks, 5);
    EXPECT_EQ(found.blind, Lines{"this Mac kept changing while it was looked at"});
}

}  // namespace

}  // namespace InspectUnitTests
