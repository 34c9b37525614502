// Every way in which a silent run can fail, with its exact log and exit status 0.

#include <gtest/gtest.h>

#include <chrono>

#include "ProductMac.h"

namespace {

using namespace SystemTests;
using Lines = std::vector<std::string>;

const std::string kFailed = "[SNTM Installer] Uninstallation failed.";
const std::string kFound = "[SNTM Installer] found installed version true, updatable: true";

class SilentFailure : public testing::Test {
  protected:
    /// Runs the uninstaller under a fault; the exit status is always 0.
    void run(const Lines& faults, const std::string& user = "root") {
        const auto start = std::chrono::steady_clock::now();
        const auto result = mac_.uninstall(faults, user);
        seconds_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        EXPECT_EQ(result.status, 0) << result.err;
    }

    ProductMac mac_{{"--installed", "current"}};
    double seconds_ = 0;
};

TEST_F(SilentFailure, AuthorizationRefused) {
    run({"authorization"});
    EXPECT_EQ(mac_.uninstallerLog(),
              (Lines{"Helper authorization and blessing failed. Quitting...", kFailed}));
    mac_.expectInstalled();
}

TEST_F(SilentFailure, AProcessWithoutAdministratorRightsIsRefusedAtOnceWithNoDialog) {
    run({}, "alice");
    EXPECT_EQ(mac_.uninstallerLog(),
              (Lines{"Helper authorization and blessing failed. Quitting...", kFailed}));
    mac_.expectInstalled();
}

TEST_F(SilentFailure, InstallerHelperNotBlessed) {
    run({"bless-installer"});
    const Lines log = mac_.uninstallerLog();
    ASSERT_EQ(log.size(), 3U);
    EXPECT_TRUE(log[0].starts_with("SMJobBless error: ")) << log[0];
    EXPECT_EQ(log[1], "Helper authorization and blessing failed. Quitting...");
    EXPECT_EQ(log[2], kFailed);
    mac_.expectInstalled();
}

TEST_F(SilentFailure, SupportHelperNotBlessed) {
    run({"bless-support"});
    const Lines log = mac_.uninstallerLog();
    ASSERT_EQ(log.size(), 3U);
    EXPECT_TRUE(log[0].starts_with("SMJobBless error: ")) << log[0];
    EXPECT_EQ(log[1], "Helper authorization and blessing failed. Quitting...");
    EXPECT_EQ(log[2], kFailed);
    mac_.expectInstalled();
}

TEST_F(SilentFailure, RuntimePackageNotInstalled) {
    run({"package"});
    const Lines log = mac_.uninstallerLog();
    ASSERT_EQ(log.size(), 3U);
    EXPECT_TRUE(log[0].starts_with("installer: Error - ")) << log[0];
    EXPECT_EQ(log[1], "Failed to install Swift runtime support. Quitting...");
    EXPECT_EQ(log[2], kFailed);
    mac_.expectInstalled();
}

TEST_F(SilentFailure, ABrokenRuntimePackageIsAnsweredWithAnError) {
    mac_.put(
        "/Applications/Sentrel.app/Contents/Applications/Uninstall Sentrel.app/Contents/Resources/"
        "SwiftRuntimeForCommandLineTools.pkg",
        "this is no package");
    run({});
    const Lines log = mac_.uninstallerLog();
    ASSERT_EQ(log.size(), 3U);
    EXPECT_TRUE(log[0].starts_with("installer: Error - ")) << log[0];
    EXPECT_EQ(log[1], "Failed to install Swift runtime support. Quitting...");
    EXPECT_EQ(log[2], kFailed);
}

TEST_F(SilentFailure, ANewerProductIsNotUninstalled) {
    ProductMac newer({"--installed", "current", "--version", "99.0/9900"});
    newer.putUninstaller("/Users/alice/Downloads");
    const auto result = newer.run(
        {}, {"/Users/alice/Downloads/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel", "--silent"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(newer.uninstallerLog(), (Lines{kFound, "Antivirus cannot be uninstalled", kFailed}));
    newer.expectInstalled();
}

TEST_F(SilentFailure, NoProductCannotBeUninstalled) {
    ProductMac bare({});
    bare.putUninstaller("/Users/alice/Downloads");
    const auto result =
        bare.run({}, {"/Users/alice/Downloads/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel", "-s"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(bare.uninstallerLog(), (Lines{"Antivirus cannot be uninstalled", kFailed}));
}

TEST_F(SilentFailure, AHelperThatNeverReportsTimesOutAfter60Seconds) {
    run({"helper-mute"});
    EXPECT_EQ(mac_.uninstallerLog(), (Lines{kFound, kFailed}));
    EXPECT_GE(seconds_, 60.0);
    // The helper did its work all the same.
    EXPECT_FALSE(mac_.exists("/Applications/Sentrel.app"));
}

TEST_F(SilentFailure, AHelperThatDiesInTheMiddleTimesOutAfter60Seconds) {
    run({"helper-exit-after=20"});
    EXPECT_EQ(mac_.uninstallerLog(), (Lines{kFound, kFailed}));
    EXPECT_GE(seconds_, 60.0);
    EXPECT_TRUE(mac_.exists("/Library/Application Support/NORVIK/SNT/settings.plist"));
}

TEST_F(SilentFailure, AHelperThatCannotBeReachedTimesOutAfter60Seconds) {
    run({"no-installer-service"});
    EXPECT_EQ(mac_.uninstallerLog(), (Lines{kFound, kFailed}));
    EXPECT_GE(seconds_, 60.0);
    mac_.expectInstalled();
}

TEST_F(SilentFailure, ReportsAfterTheDeadlineComeTooLate) {
    // Each of the many launchctl calls takes two seconds: the list is not done in time.
    run({"launchctl-hang=2"});
    const Lines log = mac_.uninstallerLog();
    EXPECT_EQ(log, (Lines{kFound, kFailed}));
    EXPECT_GE(seconds_, 60.0);
}

TEST_F(SilentFailure, OfARunCanBeMadeGoodByTheNext) {
    run({"package"});
    run({});
    mac_.expectClean();
    EXPECT_EQ(mac_.uninstallerLog().back(), "[SNTM Installer] Uninstallation finished.");
}

}  // namespace
