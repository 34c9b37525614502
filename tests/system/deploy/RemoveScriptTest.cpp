// deploy/remove-sentrel.sh in simulated Macs: every generation, fault and refusal, with its exit status and
// the leftovers.

#include <gtest/gtest.h>

#include <future>
#include <memory>

#include "RemovalMac.h"

namespace DeployTests {

namespace {

using Lines = std::vector<std::string>;

/// One Mac, its fault, and the end of the removal.
struct Outcome {
    const char* name;
    Lines mac;
    Lines faults;
    int status;
    const char* word;
    bool changed;
    int attempts;
    /// The verdict of a look at the Mac's folder afterwards.
    const char* files;
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
    return stream << outcome.name;
}

void tryOn(RemovalMac& mac, const Outcome& expected) {
    SCOPED_TRACE(expected.name);
    const auto result = mac.underFaults(expected.faults, kScript);
    expectOutcome(result, expected.status, expected.word, expected.changed);
    EXPECT_EQ(lineOf(result).value("attempts", -1), expected.attempts) << result.out;
    EXPECT_TRUE(mac.verdictFromOutside().starts_with("result: " + std::string(expected.files) + ","))
        << mac.verdictFromOutside();
}

class Removal : public testing::TestWithParam<Outcome> {};

TEST_P(Removal, EndsAsItShould) {
    RemovalMac mac(GetParam().mac);
    tryOn(mac, GetParam());
}

Lines withVersion(const char* version) {
    return {"--installed", "current", "--version", version};
}

INSTANTIATE_TEST_SUITE_P(
    OfEachGeneration, Removal,
    testing::Values(
        Outcome{"NorvikApps", {"--installed", "norvik-apps"}, {}, 0, "removed", true, 1, "nothing"},
        Outcome{"AntiVir", kQuickMac, {}, 0, "removed", true, 1, "nothing"},
        Outcome{"Antivirus", {"--installed", "antivirus"}, {}, 0, "removed", true, 1, "nothing"},
        Outcome{"SntPlain", {"--installed", "snt-plain"}, {}, 0, "removed", true, 1, "nothing"},
        Outcome{"SntFolder", {"--installed", "snt-folder"}, {}, 0, "removed", true, 1, "nothing"},
        Outcome{"SntBundle", {"--installed", "snt-bundle"}, {}, 0, "removed", true, 1, "nothing"},
        Outcome{"Current", {"--installed", "current"}, {}, 0, "removed", true, 1, "nothing"},
        Outcome{"None", {"--empty"}, {}, 0, "nothing", false, 0, "nothing"}),
    [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Refused, Removal,
    testing::Values(
        Outcome{"NewerVersion", withVersion("99.1/1"), {}, 12, "newer", false, 0, "installed"},
        Outcome{"Authorization", kQuickMac, {"authorization"}, 13, "no-rights", false, 1, "installed"},
        Outcome{"InstallerHelper", kQuickMac, {"bless-installer"}, 10, "leftovers", false, 2, "installed"},
        Outcome{"SupportHelper", kQuickMac, {"bless-support"}, 10, "leftovers", false, 2, "installed"},
        Outcome{"Package", kQuickMac, {"package"}, 10, "leftovers", true, 2, "installed"},
        Outcome{"PackageOnAFullDisk", kQuickMac, {"disk-full"}, 10, "leftovers", true, 2, "installed"}),
    [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Hindered, Removal,
    testing::Values(
        Outcome{"ExtensionInUse",
                {"--installed", "snt-bundle"},
                {"kext-busy"},
                11,
                "restart",
                true,
                1,
                "nothing"},
        Outcome{"JobsThatStay", kQuickMac, {"launchctl-fail=bootout"}, 11, "restart", true, 1, "nothing"},
        Outcome{"JobsThatCannotBeListed",
                kQuickMac,
                {"launchctl-fail=print"},
                1,
                "unknown",
                true,
                1,
                "leftovers"},
        Outcome{"NoUsers", kQuickMac, {"unreadable-passwd"}, 1, "unknown", true, 1, "nothing"},
        Outcome{"ItemThatStays",
                kQuickMac,
                {"immutable=/Users/Shared/Norvik"},
                10,
                "leftovers",
                true,
                1,
                "leftovers"},
        Outcome{"SlowLaunchd", kQuickMac, {"launchctl-hang=0.1"}, 0, "removed", true, 1, "nothing"}),
    [](const auto& info) { return info.param.name; });

// In these the uninstaller waits for its 60 seconds, in some of them twice. They wait at the same time.
TEST(RemovalThatTakesLongerThanTheUninstallerWaits, EndsAsItShould) {
    const std::vector<Outcome> outcomes{
        {"the helper works for longer",
         {"--installed", "snt-plain"},
         {"helper-pause=65"},
         0,
         "removed",
         true,
         1,
         "nothing"},
        {"the helper's reports are lost", kQuickMac, {"helper-mute"}, 0, "removed", true, 1, "nothing"},
        {"the helper dies at the end", kQuickMac, {"helper-exit-after=74"}, 0, "removed", true, 1, "nothing"},
        {"the helper dies early, twice",
         kQuickMac,
         {"helper-exit-after=20"},
         10,
         "leftovers",
         true,
         2,
         "installed"},
        {"the helper cannot be reached",
         kQuickMac,
         {"no-installer-service"},
         10,
         "leftovers",
         true,
         2,
         "installed"}};
    // All Macs are made before one runs: a program that is still being written when another thread starts one
    // cannot be run.
    std::vector<std::unique_ptr<RemovalMac>> macs;
    macs.reserve(outcomes.size());
    for (const Outcome& outcome : outcomes) {
        macs.push_back(std::make_unique<RemovalMac>(outcome.mac));
    }
    std::vector<std::future<void>> running;
    running.reserve(outcomes.size());
    for (std::size_t index = 0; index < outcomes.size(); ++index) {
        running.push_back(std::async(
            std::launch::async, [&mac = *macs[index], &outcome = outcomes[index]] { tryOn(mac, outcome); }));
    }
    for (auto& each : running) {
        each.get();
    }
}

TEST(RemovalOfAnInstallation, IsFollowedByOneThatChangesNothing) {
    RemovalMac mac(kQuickMac);
    const std::string once = kScript + " >/tmp/first; " + kScript;
    expectOutcome(mac.shell(once), 0, "nothing", false);
    // The second one asks launchd for nothing that changes anything: no helper is blessed to find that out.
    const Lines before = mac.launchctlChanges();
    EXPECT_FALSE(before.empty());
    expectOutcome(mac.shell(kScript), 0, "nothing", false);
    EXPECT_EQ(mac.launchctlChanges(), Lines());
    EXPECT_FALSE(mac.exists("/Library/PrivilegedHelperTools/com.norvik.InstallerHelper"));
    EXPECT_EQ(mac.messages("Uninstall Sentrel").size(), 3U);
}

TEST(RemovalOfAnInstallation, LeavesNothingInTmp) {
    RemovalMac mac(kQuickMac);
    EXPECT_EQ(mac.shell(kScript + " >/dev/null; echo /tmp/*").out, "/tmp/*\n");
}

TEST(RemovalOfAnInstallation, SaysWhichVersionItWas) {
    RemovalMac mac({"--installed", "current", "--version", "6.3/630", "--users", "alice:501"});
    EXPECT_EQ(lineOf(mac.shell(kScript + " --plan")).at("version"), "6.3 (630)");
}

TEST(RemovalOfLeftovers, TakesAwayWhatARefusedRunLeft) {
    RemovalMac mac({"--empty"});
    const std::string run =
        "'" + kKit + "/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel' --silent 2>/dev/null; ";
    const auto result = mac.shell(run + kInspect + " verify --wait 60 >/tmp/before; " + kScript);
    EXPECT_NE(mac.contents("/tmp/before").find("job system/com.norvik.InstallerHelper"), std::string::npos);
    expectOutcome(result, 0, "removed", true);
    const auto line = lineOf(result);
    EXPECT_EQ(line.at("before"), "leftovers");
    EXPECT_EQ(line.at("attempts"), 0);
    EXPECT_EQ(line.at("cleaned"), 6);
    EXPECT_EQ(mac.jobs("system"), Lines());
}

TEST(RemovalOfLeftovers, TakesAwayAJobWhoseFilesAreGone) {
    RemovalMac mac({"--empty", "--users", "alice:501"});
    const std::string job = "com.norvik.TrayMenu";
    mac.put("/opt/job", "#!/bin/sh\n", 0755);
    mac.put("/opt/job.plist", "<plist><dict><key>Label</key><string>" + job +
                                  "</string><key>Program</key><string>/opt/job</string></dict></plist>");
    const auto result = mac.shell("launchctl bootstrap gui/501 /opt/job.plist; rm /opt/job*; " + kScript);
    expectOutcome(result, 0, "removed", true);
    EXPECT_EQ(lineOf(result).at("before"), "restart");
    EXPECT_EQ(mac.launchctlChanges(), (Lines{"bootstrap gui/501 /opt/job.plist", "bootout gui/501/" + job}));
}

TEST(RemovalOfLeftovers, TakesAwayAProcessWhoseFileIsGone) {
    RemovalMac mac({"--empty"});
    mac.putCopy("/Users/Shared/Norvik/tool", "/usr/bin/sleep");
    expectOutcome(mac.shell(RemovalMac::startOf("/Users/Shared/Norvik/tool") +
                            "rm -r /Users/Shared/Norvik; " + kScript),
                  0, "removed", true);
    EXPECT_EQ(mac.processes(), Lines());
}

TEST(RemovalOfLeftovers, WaitsNoLongerThanItsLimitForAHelperAtWork) {
    RemovalMac mac({"--empty"});
    const std::string tool = "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper";
    const std::string plist = "/Library/LaunchDaemons/com.norvik.InstallerHelper.plist";
    mac.put(tool, "#!/bin/sh\nread line </tmp/finish\n", 0755);
    mac.put(
        plist,
        "<plist><dict><key>Label</key><string>com.norvik.InstallerHelper</string><key>ProgramArguments</key>"
        "<array><string>" +
            tool + "</string></array></dict></plist>");
    const auto result =
        mac.shell("mkfifo /tmp/finish; launchctl kickstart system/com.norvik.InstallerHelper\n" + kScript +
                  " --time-limit 1; s=$?; ls " + tool + " >/tmp/left; echo >/tmp/finish; exit $s");
    expectOutcome(result, 14, "running", false);
    EXPECT_EQ(mac.contents("/tmp/left"), tool + "\n");
}

TEST(RemovalOfLeftovers, WaitsForAnUninstallerOfSomebodyElse) {
    RemovalMac mac({"--empty"});
    mac.putCopy("/Volumes/Uninstall Sentrel", "/usr/bin/sleep");
    mac.put("/Users/Shared/Norvik/file", "");
    const auto result = mac.shell(RemovalMac::startOf("'/Volumes/Uninstall Sentrel'") + kScript +
                                  " --time-limit 1; s=$?; kill $p; exit $s");
    expectOutcome(result, 14, "running", false);
    EXPECT_TRUE(mac.exists("/Users/Shared/Norvik/file"));
    expectOutcome(mac.shell(kScript), 0, "removed", true);
}

TEST(RemovalWithoutAnUninstaller, DoesWithoutItWhereNothingIsInstalled) {
    RemovalMac mac({"--empty"}, false);
    mac.put("/Users/Shared/Norvik/file", "");
    expectOutcome(mac.shell(kScript), 0, "removed", true);
}

TEST(RemovalWithoutAnUninstaller, SaysThatItIsMissing) {
    RemovalMac mac(kQuickMac, false);
    for (const char* options : {"", " --plan", " --uninstaller /no/such.app", " --uninstaller /etc"}) {
        expectOutcome(mac.shell(kScript + options), 15, "no-uninstaller", false);
    }
    EXPECT_EQ(mac.launchctlChanges(), Lines());
}

TEST(RemovalWithoutAnUninstaller, TakesTheProductsOwn) {
    RemovalMac mac({"--installed", "current", "--users", "alice:501"}, false);
    expectOutcome(mac.shell(kScript), 0, "removed", true);
    EXPECT_EQ(mac.verdictFromOutside(), "result: nothing, 0 found, exit status 0\n");
}

TEST(RemovalWithoutRights, StopsBeforeItLooks) {
    RemovalMac mac(kQuickMac);
    const auto result = mac.shell(kScript, "alice");
    expectOutcome(result, 13, "no-rights", false);
    EXPECT_EQ(lineOf(result).at("before"), "unknown");
}

}  // namespace

}  // namespace DeployTests
