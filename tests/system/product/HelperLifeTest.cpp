// How long the helpers live, what they leave, and uninstallations at once and one after the other.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/InstallerLine.h"
#include "support/ProductMac.h"

namespace {

using TestSupport::installerLine;
using namespace SystemTests;
using Lines = std::vector<std::string>;
using testing::Contains;
using testing::Each;
using testing::EndsWith;
using testing::Not;
using testing::UnorderedElementsAre;

const std::string kInstaller = "com.norvik.InstallerHelper";
const std::string kSupport = "com.norvik.SupportPrivilegedHelper";
const std::string kTools = "/Library/PrivilegedHelperTools/";
const std::string kPlists = "/Library/LaunchDaemons/";
const std::string kRun = "'" + kElsewhere + "' --silent";
const std::string kRefused = "Antivirus cannot be uninstalled";

/// A Mac with an uninstaller that does not go with the product.
struct MacWithUninstaller : ProductMac {
    explicit MacWithUninstaller(const Lines& options) : ProductMac(options) {
        putUninstaller("/Users/alice/Downloads");
    }

    [[nodiscard]] bool hasTool(const std::string& label) const {
        return exists(kTools + label) && exists(kPlists + label + ".plist");
    }
    [[nodiscard]] int count(const std::string& line) const {
        const Lines log = uninstallerLog();
        return static_cast<int>(std::count(log.begin(), log.end(), line));
    }
    void expectNoHelper() const {
        for (const std::string& label : {kInstaller, kSupport}) {
            EXPECT_FALSE(exists(kTools + label)) << label;
            EXPECT_FALSE(exists(kPlists + label + ".plist")) << label;
        }
        EXPECT_EQ(jobs("system"), Lines());
    }
};

TEST(HelperLife, ARefusedRunLeavesBothHelpersAndTheirJobsIdle) {
    MacWithUninstaller mac({});
    EXPECT_EQ(mac.shell(kRun).status, 0);
    EXPECT_EQ(mac.uninstallerLog(), (Lines{kRefused, kFailed}));
    EXPECT_TRUE(mac.hasTool(kInstaller));
    EXPECT_TRUE(mac.hasTool(kSupport));
    EXPECT_THAT(mac.jobs("system"), UnorderedElementsAre(kInstaller, kSupport));
    EXPECT_EQ(mac.processes(), Lines());
}

TEST(HelperLife, ByTheCommandsOfTheManualTheyAreTakenAway) {
    MacWithUninstaller mac({});
    EXPECT_EQ(mac.shell(kRun).status, 0);
    mac.shell("for label in " + kInstaller + " " + kSupport +
              "; do launchctl bootout \"system/$label\"; rm -f \"" + kTools + "$label\" \"" + kPlists +
              "$label.plist\"; done");
    mac.expectNoHelper();
}

TEST(HelperLife, TheSupportHelperLeavesWhenItHasServedAndKeepsToolAndJob) {
    MacWithUninstaller mac({});
    // It is done when its process has gone; the time that takes is its own.
    const auto result = mac.shell(kRun + "; while launchctl list " + kSupport +
                                  " | grep -q 'pid ='; do sleep 0.1; done; launchctl list | grep -c Support");
    EXPECT_EQ(result.out, "1\n");
    EXPECT_TRUE(mac.hasTool(kSupport));
}

TEST(HelperLife, AFinishedRunLeavesNeitherToolNorPropertyListNorJobOfEitherHelper) {
    MacWithUninstaller mac({"--installed", "current"});
    EXPECT_EQ(mac.shell(kRun).status, 0);
    EXPECT_EQ(mac.uninstallerLog().back(), kFinished);
    mac.expectNoHelper();
    mac.expectClean();
}

TEST(HelperLife, AListThatTakesLessThanTheSupportHelpersStayLeavesNothingEither) {
    MacWithUninstaller mac({"--installed", "snt-plain"});
    EXPECT_EQ(mac.shell(kRun).status, 0);
    EXPECT_EQ(mac.uninstallerLog().back(), kFinished);
    mac.expectNoHelper();
}

TEST(HelperLife, AHelperThatDiesAfterTheSecondToLastCommandLeavesOnlyItemsThatTheManualRemoves) {
    MacWithUninstaller mac({"--installed", "current"});
    EXPECT_EQ(mac.run({"helper-exit-after=74"}, {kElsewhere, "--silent"}).status, 0);
    EXPECT_EQ(mac.uninstallerLog().back(), kFailed);
    EXPECT_TRUE(mac.hasTool(kInstaller));
    EXPECT_EQ(mac.shell(kRun).status, 0);
    EXPECT_EQ(mac.count(kRefused), 1);
    EXPECT_TRUE(mac.hasTool(kInstaller));
    EXPECT_TRUE(mac.hasTool(kSupport));
}

TEST(HelperLife, AHelperThatDiesWithItsLastReportLeavesNothing) {
    MacWithUninstaller mac({"--installed", "current"});
    EXPECT_EQ(mac.run({"helper-exit-after=75"}, {kElsewhere, "--silent"}).status, 0);
    EXPECT_EQ(mac.uninstallerLog().back(), kFinished);
    mac.expectNoHelper();
}

TEST(HelperLife, ALaunchdThatRefusesEveryRemovalLeavesHelpersThatTheNextRunUses) {
    MacWithUninstaller mac({"--installed", "snt-plain"});
    EXPECT_EQ(mac.run({"launchctl-fail=bootout"}, {kElsewhere, "--silent"}).status, 0);
    EXPECT_EQ(mac.uninstallerLog().back(), kFinished);
    EXPECT_FALSE(mac.exists(kTools + kInstaller));
    EXPECT_THAT(mac.jobs("system"), testing::IsSupersetOf({kInstaller, kSupport}));
    EXPECT_TRUE(mac.hasTool(kSupport));
    EXPECT_EQ(mac.shell(kRun).status, 0);
    EXPECT_EQ(mac.uninstallerLog().back(), kFailed);
    EXPECT_EQ(mac.count(kRefused), 1);
}

TEST(TwoUninstallations, AtOnceBothFinishAndLeaveNothing) {
    MacWithUninstaller mac({"--installed", "current"});
    const auto result = mac.shell(kRun + " & " + kRun + " & wait");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(mac.count(kFinished), 2);
    mac.expectNoHelper();
    mac.expectClean();
    EXPECT_THAT(mac.messages("launchd"), Each(Not(testing::HasSubstr("refused"))));
}

TEST(TwoUninstallations, TheSecondRightAfterTheFirstIsRefusedAndItsHelpersAreNew) {
    MacWithUninstaller mac({"--installed", "current"});
    EXPECT_EQ(mac.shell(kRun + "; " + kRun).status, 0);
    EXPECT_EQ(mac.uninstallerLog(), (Lines{kSuccess[0], kSuccess[1], kSuccess[2], kRefused, kFailed}));
    EXPECT_TRUE(mac.hasTool(kInstaller));
    EXPECT_TRUE(mac.hasTool(kSupport));
    EXPECT_THAT(mac.jobs("system"), UnorderedElementsAre(kInstaller, kSupport));
}

TEST(TwoUninstallations, RefusedOnesRightAfterEachOtherAreAllRefused) {
    MacWithUninstaller mac({});
    EXPECT_EQ(mac.shell("for i in 1 2 3 4 5; do " + kRun + "; done").status, 0);
    EXPECT_EQ(mac.count(kRefused), 5);
    EXPECT_EQ(mac.count(kFailed), 5);
    EXPECT_EQ(mac.uninstallerLog().size(), 10U);
}

TEST(TwoUninstallations, ARefusedOneStartedWhileTheHelpersLeaveIsRefusedAsBefore) {
    MacWithUninstaller mac({});
    EXPECT_EQ(
        mac.shell(kRun + "; while launchctl list " + kSupport + " | grep -q 'pid ='; do :; done; " + kRun)
            .status,
        0);
    EXPECT_EQ(mac.uninstallerLog(), (Lines{kRefused, kFailed, kRefused, kFailed}));
}

}  // namespace
