#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "system/window/WindowedMac.h"

namespace {

using namespace SystemTests;
using Lines = std::vector<std::string>;

constexpr const char* kTitle = "Uninstall Sentrel";
constexpr const char* kNotAuthorized = "You are not authorized to run uninstallation.";
constexpr const char* kNewerVersion = "Please, use newer uninstaller in order to uninstall application.";

bool isReady(const Interface& shown) {
    return shown.isReady();
}
bool isRunning(const Interface& shown) {
    return shown.isRunning();
}
bool isFinished(const Interface& shown) {
    return shown.isFinished();
}

/// A click's condition: the uninstaller has ended.
auto ends(WindowedMac& mac) {
    return [&mac](auto limit) { return mac.exitStatus(limit) != -1; };
}

TEST(WindowedUninstallation, RemovesTheProductFromReadyThroughRunningToFinished) {
    WindowedMac mac({"--installed", "all", "--running", "Sentrel,View Logs,NORVIK Antivirus"});
    mac.start();
    const auto ready = mac.waitFor(isReady);
    ASSERT_TRUE(ready) << mac.terminal();
    EXPECT_EQ(ready->main()->title, kTitle);
    EXPECT_NE(ready->main()->button("Uninstall"), nullptr);
    EXPECT_NE(ready->main()->button("Cancel"), nullptr);
    EXPECT_TRUE(mac.writeScreenshot("ready-en"));
    ASSERT_TRUE(mac.pressUninstall());
    ASSERT_TRUE(mac.giveAdministratorPassword("alice", "authorization-en")) << mac.terminal();
    const auto running = mac.waitFor(isRunning);
    ASSERT_TRUE(running) << mac.terminal();
    EXPECT_EQ(running->main()->button("Cancel"), nullptr);
    const auto finished = mac.waitFor(isFinished);
    ASSERT_TRUE(finished) << mac.terminal();
    EXPECT_TRUE(mac.writeScreenshot("finished-en"));
    EXPECT_EQ(finished->main()->progress()->value, 100);
    ASSERT_NE(finished->main()->button("Done"), nullptr);
    EXPECT_NE(finished->main()->text("Sentrel has been uninstalled from this Mac."), nullptr);
    EXPECT_TRUE(mac.clickUntil(*finished->main()->button("Done"), ends(mac)));
    EXPECT_EQ(mac.exitStatus(), 0) << mac.terminal();
    mac.mac().expectClean();
}

TEST(WindowedUninstallation, SpeaksTheLanguageOfTheUser) {
    WindowedMac mac({"--installed", "current"}, {}, "de");
    mac.start();
    const auto ready = mac.waitFor(isReady);
    ASSERT_TRUE(ready) << mac.terminal();
    EXPECT_NE(ready->main()->button("Abbrechen"), nullptr);
    EXPECT_TRUE(mac.writeScreenshot("ready-de"));
    ASSERT_TRUE(mac.pressUninstall());
    ASSERT_TRUE(mac.giveAdministratorPassword("alice", "authorization-de")) << mac.terminal();
    const auto finished = mac.waitFor(isFinished);
    ASSERT_TRUE(finished) << mac.terminal();
    EXPECT_TRUE(mac.writeScreenshot("finished-de"));
    EXPECT_EQ(finished->main()->buttons().front()->text, "Fertig");
    // Without a window manager nobody gives the keyboard back after the administrator dialog; a click does.
    ASSERT_TRUE(mac.clickUntil(*finished->main()->progress(), [&](auto limit) {
        return mac.display().waitForWindow("Sentrel deinstallieren", limit);
    }));
    mac.display().press("Return");
    EXPECT_EQ(mac.exitStatus(), 0) << mac.terminal();
    mac.mac().expectClean();
}

TEST(WindowedUninstallation, WhileRunningTheCloseBoxAndQuitAreRefused) {
    WindowedMac mac({"--installed", "current"}, {"helper-mute"});
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    ASSERT_TRUE(mac.giveAdministratorPassword("alice"));
    const auto running = mac.waitFor(isRunning);
    ASSERT_TRUE(running) << mac.terminal();
    const auto closeBox = running->main()->closeBox;
    ASSERT_TRUE(closeBox) << "the window has a close box";
    mac.display().click(closeBox->first, closeBox->second);
    EXPECT_TRUE(mac.display().waitForWindow(kTitle));
    mac.display().press("alt+q");
    EXPECT_EQ(mac.exitStatus(std::chrono::seconds(2)), -1) << "it has ended";
    EXPECT_TRUE(mac.now().isRunning());
}

TEST(WindowedUninstallation, WhileReadyTheCloseBoxQuits) {
    WindowedMac mac({"--installed", "current"});
    mac.start();
    const auto ready = mac.waitFor(isReady);
    ASSERT_TRUE(ready) << mac.terminal();
    const auto closeBox = ready->main()->closeBox;
    ASSERT_TRUE(closeBox);
    EXPECT_TRUE(mac.display().clickUntil(closeBox->first, closeBox->second, ends(mac)));
    EXPECT_EQ(mac.exitStatus(), 0) << mac.terminal();
    mac.mac().expectInstalled();
}

class EndsTheReadyWindow : public testing::TestWithParam<const char*> {};

TEST_P(EndsTheReadyWindow, AndChangesNothing) {
    WindowedMac mac({"--installed", "current"});
    mac.start();
    const auto ready = mac.waitFor(isReady);
    ASSERT_TRUE(ready) << mac.terminal();
    if (std::string(GetParam()) == "Cancel") {
        EXPECT_TRUE(mac.clickUntil(*ready->main()->button("Cancel"), ends(mac)));
    } else {
        EXPECT_TRUE(mac.display().waitForWindow(kTitle));
        mac.display().press(GetParam());
    }
    EXPECT_EQ(mac.exitStatus(), 0) << mac.terminal();
    mac.mac().expectInstalled();
    EXPECT_EQ(mac.mac().uninstallerLog(), Lines());
}

INSTANTIATE_TEST_SUITE_P(WindowedUninstallation, EndsTheReadyWindow,
                         testing::Values("Cancel", "Escape", "alt+q"),
                         [](const testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param) == "alt+q" ? "CommandQ" : info.param;
                         });

TEST(WindowedUninstallation, ReturnPressesUninstall) {
    WindowedMac mac({"--installed", "current"});
    mac.start();
    ASSERT_TRUE(mac.waitFor(isReady)) << mac.terminal();
    EXPECT_TRUE(mac.display().waitForWindow(kTitle));
    mac.display().press("Return");
    EXPECT_TRUE(mac.cancelAdministratorDialog());
}

TEST(WindowedUninstallation, AProductThatIsNotInstalledIsSaidInAnAlertAndTheProgramEnds) {
    WindowedMac mac({"--empty"});
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    EXPECT_TRUE(mac.answerAlert("Sentrel is not installed.", "not-installed-en"));
    EXPECT_EQ(mac.exitStatus(), 0) << mac.terminal();
}

TEST(WindowedUninstallation, AProductThatIsNotInstalledIsSaidInTheLanguageOfTheUser) {
    WindowedMac mac({"--empty"}, {}, "de");
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    EXPECT_TRUE(mac.answerAlert("Sentrel ist nicht installiert.", "not-installed-de"));
    EXPECT_EQ(mac.exitStatus(), 0) << mac.terminal();
}

class NewerProduct : public testing::TestWithParam<const char*> {};

TEST_P(NewerProduct, IsSaidInFixedEnglishInEveryLanguageAndTheProgramEnds) {
    const std::string language = GetParam();
    WindowedMac mac({"--installed", "current", "--version", "99.0/9900"}, {}, language);
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    EXPECT_TRUE(mac.answerAlert(kNewerVersion, "newer-version-" + language));
    EXPECT_EQ(mac.exitStatus(), 0) << mac.terminal();
    mac.mac().expectInstalled();
}

INSTANTIATE_TEST_SUITE_P(WindowedUninstallation, NewerProduct, testing::Values("en", "de"));

class CancelledAuthorization : public testing::TestWithParam<const char*> {};

TEST_P(CancelledAuthorization, IsSaidAndTheProgramEnds) {
    const std::string language = GetParam();
    WindowedMac mac({"--installed", "current"}, {}, language);
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    ASSERT_TRUE(mac.cancelAdministratorDialog());
    EXPECT_TRUE(mac.answerAlert(kNotAuthorized, "not-authorized-" + language));
    EXPECT_EQ(mac.exitStatus(), 0) << mac.terminal();
    mac.mac().expectInstalled();
}

INSTANTIATE_TEST_SUITE_P(WindowedUninstallation, CancelledAuthorization, testing::Values("en", "de"));

class FailedSetUp : public testing::TestWithParam<const char*> {};

TEST_P(FailedSetUp, IsSaidAsNotAuthorizedAndTheProgramEnds) {
    WindowedMac mac({"--installed", "current"}, {GetParam()});
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    ASSERT_TRUE(mac.giveAdministratorPassword("alice"));
    EXPECT_TRUE(mac.answerAlert(kNotAuthorized));
    EXPECT_EQ(mac.exitStatus(), 0) << mac.terminal();
    mac.mac().expectInstalled();
}

INSTANTIATE_TEST_SUITE_P(WindowedUninstallation, FailedSetUp,
                         testing::Values("bless-installer", "bless-support", "package"),
                         [](const testing::TestParamInfo<const char*>& info) {
                             std::string name = info.param;
                             std::erase(name, '-');
                             return name;
                         });

TEST(WindowedUninstallation, ParentalControlThatRefusesLeavesTheWindowReady) {
    WindowedMac mac({"--installed", "current", "--parental-control", "refused"});
    mac.start();
    const auto ready = mac.waitFor(isReady);
    ASSERT_TRUE(ready) << mac.terminal();
    mac.click(*ready->main()->button("Uninstall"));
    EXPECT_FALSE(mac.display().waitForWindow("SecurityAgent", std::chrono::seconds(3)))
        << "no administrator is asked";
    EXPECT_TRUE(mac.now().isReady());
    EXPECT_EQ(mac.exitStatus(std::chrono::seconds(1)), -1);
}

TEST(WindowedUninstallation, ParentalControlThatIsNotUnlockedLeavesTheWindowReady) {
    WindowedMac mac({"--installed", "current", "--parental-control", "on"});
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    ASSERT_TRUE(mac.display().waitForWindow("Parental control"));
    EXPECT_TRUE(mac.writeScreenshot("parental-control"));
    mac.display().press("Escape");
    ASSERT_TRUE(mac.display().waitUntilGone("Parental control"));
    EXPECT_TRUE(mac.waitFor(isReady));
    ASSERT_TRUE(mac.display().waitForWindow(kTitle));
    mac.display().press("alt+q");
    EXPECT_EQ(mac.exitStatus(), 0) << mac.terminal();
    mac.mac().expectInstalled();
}

TEST(WindowedUninstallation, ParentalControlThatIsUnlockedLetsTheRunBegin) {
    WindowedMac mac({"--installed", "current", "--parental-control", "on"});
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    ASSERT_TRUE(mac.display().waitForWindow("Parental control"));
    mac.display().type("sentrel");
    mac.display().press("Return");
    EXPECT_TRUE(mac.cancelAdministratorDialog());
}

TEST(WindowedUninstallation, WithoutTheDaemonParentalControlIsNotAsked) {
    WindowedMac mac({"--installed", "current", "--parental-control", "refused"});
    ASSERT_EQ(mac.mac().shell("rm /Library/LaunchDaemons/com.norvik.fileaccessd.plist").status, 0);
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    EXPECT_TRUE(mac.cancelAdministratorDialog());
}

class HelperThatDies : public testing::TestWithParam<const char*> {};

TEST_P(HelperThatDies, LeavesTheWindowRunningAtItsLastReport) {
    const std::string language = GetParam();
    WindowedMac mac({"--installed", "current"}, {"helper-exit-after=30"}, language);
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    ASSERT_TRUE(mac.giveAdministratorPassword("alice"));
    const auto stopped = mac.waitFor([](const Interface& shown) {
        return shown.isRunning() && shown.main()->progress()->value == 30 / (75 / 100.0);
    });
    ASSERT_TRUE(stopped) << mac.terminal();
    EXPECT_TRUE(mac.writeScreenshot("running-" + language));
    EXPECT_EQ(mac.exitStatus(std::chrono::seconds(2)), -1) << "it has ended";
    EXPECT_TRUE(mac.now().isRunning());
}

INSTANTIATE_TEST_SUITE_P(WindowedUninstallation, HelperThatDies, testing::Values("en", "de"));

TEST(WindowedUninstallation, AHelperThatCannotBeReachedLeavesTheWindowRunning) {
    WindowedMac mac({"--installed", "current"}, {"no-installer-service"});
    mac.start();
    ASSERT_TRUE(mac.pressUninstall()) << mac.terminal();
    ASSERT_TRUE(mac.giveAdministratorPassword("alice"));
    ASSERT_TRUE(mac.waitFor(isRunning)) << mac.terminal();
    EXPECT_EQ(mac.exitStatus(std::chrono::seconds(3)), -1) << "it has ended";
    ASSERT_TRUE(mac.now().isRunning());
    EXPECT_EQ(mac.now().main()->progress()->value, 0);
}

}  // namespace
