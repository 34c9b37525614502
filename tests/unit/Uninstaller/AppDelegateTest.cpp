#include "Uninstaller/AppDelegate.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "WindowFlow.h"

namespace {

using ProductTests::WindowFlow;
using TestSupport::Call;
using TestSupport::CallList;
using Uninstall_Sentrel::AppDelegate;
using Uninstall_Sentrel::UninstallerWindowController;

const Call kNotInstalled{"alert", "Gut", "Sentrel fehlt.", ""};
const Call kNewVersion{"alert", "OK", "Please, use newer uninstaller in order to uninstall application.",
                       "This uninstaller has older version than installed app."};
const Call kNotAuthorized{"alert", "Gut", "You are not authorized to run uninstallation.", ""};

TEST_F(WindowFlow, RunsTheWholeSequenceInteractivelyAndInOrder) {
    controller_.uninstallAction();
    EXPECT_EQ(mac_.callsOf("authorize"), (CallList{{"authorize", "system.privilege.admin", 3}}));
    EXPECT_EQ(mac_.callsOf("bless"), (CallList{{"bless", "com.norvik.InstallerHelper"},
                                               {"bless", "com.norvik.SupportPrivilegedHelper"}}));
    EXPECT_EQ(helper_.packages.size(), 1U);
    EXPECT_EQ(helper_.lists.at(0).size(), 75U);
    EXPECT_EQ(alerts(), CallList());
    EXPECT_EQ(mac_.callsOf("terminate"), CallList());
}

TEST_F(WindowFlow, ReportsReachTheControlsOnTheMainQueueOnly) {
    controller_.uninstallAction();
    EXPECT_EQ(framework_.mainQueue.size(), 75U);
    EXPECT_EQ(framework_.progressIndicator->value, 0);
    EXPECT_EQ(framework_.progressDescription->value, "");
    framework_.mainQueue.at(0)();
    EXPECT_EQ(framework_.progressIndicator->value, 1 / (75 / 100.0));
    EXPECT_EQ(framework_.progressDescription->value, "Unloading daemon com.norvik.containmentd...");
    EXPECT_FALSE(delegate_->applicationShouldTerminate());
}

TEST_F(WindowFlow, ProgressIsExecutedDividedByAHundredthOfTheTotal) {
    controller_.uninstallAction();
    framework_.drainMainQueue();
    std::vector<double> expected{0};
    for (int executed = 1; executed <= 75; ++executed) {
        expected.push_back(executed / (75 / 100.0));
    }
    EXPECT_EQ(framework_.progressIndicator->values, expected);
    EXPECT_EQ(framework_.progressIndicator->value, 100.0);
}

TEST_F(WindowFlow, TheLastReportFinishesTheWindow) {
    controller_.uninstallAction();
    framework_.drainMainQueue();
    EXPECT_EQ(framework_.uninstallButton->title, "Fertig");
    EXPECT_EQ(framework_.label->value, "Sentrel ist weg.");
    EXPECT_TRUE(framework_.progressDescription->isHidden);
    EXPECT_TRUE(delegate_->applicationShouldTerminate());
}

TEST_F(WindowFlow, HelperThatStopsReportingLeavesTheWindowRunning) {
    helper_.reportsAtMost = 74;
    controller_.uninstallAction();
    framework_.drainMainQueue();
    EXPECT_FALSE(delegate_->applicationShouldTerminate());
    EXPECT_FALSE(controller_.windowShouldClose());
    EXPECT_FALSE(framework_.uninstallButton->isEnabled);
    EXPECT_EQ(mac_.callsOf("wait until"), CallList());
}

TEST_F(WindowFlow, NoReportAtAllAsFromATotalWeightOf0NeverFinishes) {
    helper_.reportsAtMost = 0;
    controller_.uninstallAction();
    framework_.drainMainQueue();
    EXPECT_TRUE(framework_.mainQueue.empty());
    EXPECT_FALSE(delegate_->applicationShouldTerminate());
}

TEST_F(WindowFlow, HelperUnreachableAfterASuccessfulSetUpStaysRunningWithQuittingRefused) {
    mac_.xpc.services["com.norvik.InstallerHelper"] = [](std::string_view, std::vector<Platform::XPCValue>,
                                                         const Platform::XPCReply&) {};
    controller_.uninstallAction();
    mac_.xpc.connections.back()->invalidationHandler();
    framework_.drainMainQueue();
    EXPECT_FALSE(delegate_->applicationShouldTerminate());
    EXPECT_TRUE(framework_.cancelButton->isHidden);
    EXPECT_EQ(alerts(), CallList());
}

TEST_F(WindowFlow, ProductNotInstalledTheAlertAppearsAndTheApplicationQuits) {
    removeProduct();
    // Quitting ends the process on a Mac, with this answer; what follows here is a request that returned.
    std::vector<CallList> callsBefore;
    framework_.shouldTerminate = [&] {
        callsBefore.push_back(mac_.calls);
        return delegate_->applicationShouldTerminate();
    };
    controller_.uninstallAction();
    ASSERT_FALSE(callsBefore.empty());
    const CallList& calls = callsBefore.front();
    ASSERT_GE(calls.size(), 2U);
    EXPECT_EQ(calls.at(calls.size() - 2), kNotInstalled);
    EXPECT_EQ(calls.back(), Call("terminate"));
    EXPECT_EQ(std::count(calls.begin(), calls.end(), Call("authorize", "system.privilege.admin", 3)), 0);
    EXPECT_EQ(framework_.terminations, static_cast<int>(callsBefore.size()));
    EXPECT_TRUE(controller_.terminateEnabled());
}

TEST_F(WindowFlow, ARequestToQuitThatReturnsLetsTheBlockCarryOn) {
    removeProduct();
    mac_.authorization.grants = false;
    controller_.uninstallAction();
    EXPECT_EQ(alerts(), (CallList{kNotInstalled, kNewVersion, kNotAuthorized}));
    EXPECT_EQ(mac_.callsOf("terminate").size(), 3U);
}

TEST_F(WindowFlow, CarryingOnAfterAnAlertEndsInTheUninstallationItself) {
    removeProduct();
    controller_.uninstallAction();
    EXPECT_EQ(alerts(), (CallList{kNotInstalled, kNewVersion}));
    EXPECT_EQ(helper_.lists.size(), 1U);
}

TEST_F(WindowFlow, NewerProductInstalledTheNewVersionAlertInFixedEnglish) {
    mac_.bundles.install("/Applications/Sentrel.app", "7.0", "700");
    mac_.authorization.grants = false;
    controller_.uninstallAction();
    EXPECT_EQ(alerts(), (CallList{kNewVersion, kNotAuthorized}));
}

TEST_F(WindowFlow, AuthorizationDialogCancelledTheNotAuthorizedAlert) {
    mac_.authorization.grants = false;
    controller_.uninstallAction();
    EXPECT_EQ(alerts(), CallList{kNotAuthorized});
    EXPECT_EQ(framework_.terminations, 1);
    EXPECT_EQ(mac_.callsOf("bless"), CallList());
}

TEST_F(WindowFlow, AFailedBlessingOfTheInstallerHelperIsNotAuthorized) {
    mac_.serviceManagement.failures["com.norvik.InstallerHelper"] = {"no", 4};
    controller_.uninstallAction();
    EXPECT_EQ(alerts(), CallList{kNotAuthorized});
    EXPECT_EQ(mac_.callsOf("bless"), (CallList{{"bless", "com.norvik.InstallerHelper"}}));
}

TEST_F(WindowFlow, AFailedBlessingOfTheSupportHelperIsNotAuthorized) {
    mac_.serviceManagement.failures["com.norvik.SupportPrivilegedHelper"] = {"no", 4};
    controller_.uninstallAction();
    EXPECT_EQ(alerts(), CallList{kNotAuthorized});
    EXPECT_TRUE(helper_.packages.empty());
}

TEST_F(WindowFlow, AFailedRuntimePackageIsNotAuthorized) {
    helper_.packageError = Platform::Error{"bad package", 1};
    controller_.uninstallAction();
    EXPECT_EQ(alerts(), CallList{kNotAuthorized});
    EXPECT_TRUE(helper_.lists.empty());
}

TEST_F(WindowFlow, TheOKOfTheLocalizedAlertsHasADefault) {
    mac_.bundles.mainTexts.clear();
    mac_.authorization.grants = false;
    removeProduct();
    controller_.uninstallAction();
    EXPECT_EQ(alerts(), (CallList{{"alert", "OK", "", ""},
                                  kNewVersion,
                                  {"alert", "OK", "You are not authorized to run uninstallation.", ""}}));
}

TEST_F(WindowFlow, WithoutAnAlertToShowTheApplicationStillQuits) {
    framework_.makesAlerts = false;
    mac_.authorization.grants = false;
    controller_.uninstallAction();
    EXPECT_EQ(mac_.callsOf("no alert").size(), 1U);
    EXPECT_EQ(alerts(), CallList());
    EXPECT_EQ(framework_.terminations, 1);
}

TEST_F(WindowFlow, QuittingIsAllowedWhileReadyAndRefusedWhileRunning) {
    EXPECT_TRUE(delegate_->applicationShouldTerminate());
    helper_.reportsAtMost = 0;
    controller_.uninstallAction();
    EXPECT_FALSE(delegate_->applicationShouldTerminate());
}

TEST_F(WindowFlow, AWindowWithoutAControllerRefusesToQuit) {
    framework_.window->controller = nullptr;
    EXPECT_FALSE(delegate_->applicationShouldTerminate());
}

TEST_F(WindowFlow, AnotherKindOfControllerRefusesToQuitAndGetsNoBlock) {
    struct Other final : Uninstall_Sentrel::WindowController {};
    Other other;
    framework_.window->controller = &other;
    delegate_->applicationDidFinishLaunching();
    EXPECT_FALSE(delegate_->applicationShouldTerminate());
}

TEST_F(WindowFlow, ReportsForAWindowWithoutTheControllerAreDropped) {
    controller_.uninstallAction();
    framework_.window->controller = nullptr;
    framework_.drainMainQueue();
    EXPECT_EQ(framework_.progressIndicator->values, std::vector<double>{0});
}

TEST_F(WindowFlow, TheHelperClientIsMadeAtItsFirstUseAndKept) {
    InstallCommon::InstallationHelperClient& client = delegate_->installationClient();
    EXPECT_EQ(&delegate_->installationClient(), &client);
    EXPECT_EQ(client.machServiceName(), "com.norvik.InstallerHelper");
    EXPECT_TRUE(client.isServicePrivileged());
}

TEST_F(WindowFlow, TheUninstallBlockHoldsTheDelegate) {
    const std::weak_ptr<AppDelegate> observed = delegate_;
    framework_.shouldTerminate = nullptr;
    delegate_.reset();
    EXPECT_FALSE(observed.expired());
    controller_.setUninstallBlock({});
    EXPECT_TRUE(observed.expired());
}

}  // namespace
