#include "Uninstaller/UninstallerWindowController.h"

#include <gtest/gtest.h>

#include "support/FakeApplication.h"

namespace {

using TestSupport::CallList;
using Uninstall_Sentrel::UninstallerWindowController;

constexpr const char* kRoot = "com.norvik.antivirus.DaemonRoot";

class WindowController : public testing::Test {
  protected:
    WindowController() {
        mac_.bundles.mainTexts = {{{"WebInstaller", "367"}, "Remove %@"},
                                  {{"WebInstaller", "368"}, "%@ is gone."},
                                  {{"WebInstaller", "d234c1075"}, "Finish"}};
        framework_.label->value = "Removes %@ and its data.";
        framework_.cancelButton->action = [this] { controller_.cancelAction(); };
        framework_.uninstallButton->action = [this] { controller_.uninstallAction(); };
        framework_.shouldTerminate = [this] { return controller_.terminateEnabled(); };
        framework_.window->controller = &controller_;
        controller_.setUninstallBlock([this] { mac_.calls.push_back({"uninstall"}); });
    }

    TestSupport::FakeMac mac_;
    TestSupport::FakeApplicationFramework framework_{mac_};
    UninstallerWindowController controller_{framework_, framework_.outlets()};
};

TEST_F(WindowController, AwakesReadyWithItsTextsAndWithoutProgress) {
    EXPECT_FALSE(controller_.terminateEnabled());
    controller_.awakeFromNib();
    EXPECT_TRUE(controller_.terminateEnabled());
    EXPECT_EQ(mac_.calls, CallList{{"activate"}});
    EXPECT_EQ(framework_.window->title, "Remove Sentrel");
    EXPECT_EQ(framework_.label->value, "Removes Sentrel and its data.");
    EXPECT_EQ(framework_.progressIndicator->values, std::vector<double>{0});
    EXPECT_TRUE(framework_.progressIndicator->isHidden);
    EXPECT_TRUE(framework_.progressDescription->isHidden);
    EXPECT_FALSE(framework_.cancelButton->isHidden);
    EXPECT_TRUE(framework_.uninstallButton->isEnabled);
}

TEST_F(WindowController, TheProductNameIsAWritableGlobal) {
    EXPECT_EQ(Uninstall_Sentrel::kAntivirusProductName, "Sentrel");
    Uninstall_Sentrel::kAntivirusProductName = "Other Edition";
    controller_.awakeFromNib();
    Uninstall_Sentrel::kAntivirusProductName = "Sentrel";
    EXPECT_EQ(framework_.window->title, "Remove Other Edition");
    EXPECT_EQ(framework_.label->value, "Removes Other Edition and its data.");
}

TEST_F(WindowController, MissingTextsAreEmpty) {
    mac_.bundles.mainTexts.clear();
    framework_.window->title = "before";
    controller_.awakeFromNib();
    EXPECT_EQ(framework_.window->title, "");
    controller_.installationFinished();
    EXPECT_EQ(framework_.label->value, "");
    EXPECT_EQ(framework_.uninstallButton->title, "");
}

TEST_F(WindowController, UninstallGoesIntoTheRunningStateBeforeTheBlock) {
    controller_.awakeFromNib();
    controller_.setUninstallBlock([this] {
        EXPECT_FALSE(controller_.terminateEnabled());
        EXPECT_TRUE(framework_.cancelButton->isHidden);
        EXPECT_FALSE(framework_.uninstallButton->isEnabled);
        EXPECT_FALSE(framework_.progressIndicator->isHidden);
        EXPECT_FALSE(framework_.progressDescription->isHidden);
        mac_.calls.push_back({"uninstall"});
    });
    framework_.uninstallButton->press();
    EXPECT_EQ(mac_.calls, (CallList{{"activate"},
                                    {"parental control made"},
                                    {"root proxy", "com.norvik.antivirus.DaemonRoot"},
                                    {"uninstall"}}));
}

TEST_F(WindowController, DaemonNotRunningNoParentalControlPrompt) {
    framework_.parentalControlApproves = false;
    controller_.uninstallAction();
    EXPECT_EQ(mac_.callsOf("parental control asked"), CallList());
    EXPECT_EQ(mac_.callsOf("uninstall"), CallList{{"uninstall"}});
}

TEST_F(WindowController, ParentalControlThatApprovesLetsTheRunBegin) {
    mac_.distantObjects.registered = {kRoot};
    controller_.uninstallAction();
    EXPECT_EQ(mac_.callsOf("parental control asked"), CallList{{"parental control asked"}});
    EXPECT_EQ(mac_.callsOf("uninstall"), CallList{{"uninstall"}});
}

TEST_F(WindowController, ParentalControlThatRefusesChangesNothing) {
    mac_.distantObjects.registered = {kRoot};
    framework_.parentalControlApproves = false;
    controller_.awakeFromNib();
    framework_.uninstallButton->press();
    EXPECT_EQ(mac_.callsOf("uninstall"), CallList());
    EXPECT_TRUE(controller_.terminateEnabled());
    EXPECT_FALSE(framework_.cancelButton->isHidden);
    EXPECT_TRUE(framework_.uninstallButton->isEnabled);
    EXPECT_TRUE(framework_.progressIndicator->isHidden);
}

TEST_F(WindowController, PressingTheCloseBoxWhileRunningDoesNothing) {
    controller_.awakeFromNib();
    controller_.uninstallAction();
    EXPECT_FALSE(controller_.windowShouldClose());
    EXPECT_EQ(mac_.callsOf("terminate"), CallList());
}

TEST_F(WindowController, TheCloseBoxQuitsWhileReadyAndAllowsTheClose) {
    controller_.awakeFromNib();
    EXPECT_TRUE(controller_.windowShouldClose());
    EXPECT_EQ(framework_.terminations, 1);
}

TEST_F(WindowController, CancelAndFinishAskToQuit) {
    controller_.awakeFromNib();
    framework_.cancelButton->press();
    EXPECT_EQ(framework_.terminations, 1);
    controller_.finishAction();
    EXPECT_EQ(framework_.terminations, 2);
}

TEST_F(WindowController, FinishedMakesTheButtonTheFinishButtonAndKeepsTheBar) {
    controller_.awakeFromNib();
    controller_.uninstallAction();
    framework_.progressIndicator->setDoubleValue(100);
    controller_.installationFinished();
    EXPECT_TRUE(framework_.uninstallButton->isEnabled);
    EXPECT_EQ(framework_.uninstallButton->title, "Finish");
    EXPECT_EQ(framework_.label->value, "Sentrel is gone.");
    EXPECT_TRUE(framework_.progressDescription->isHidden);
    EXPECT_FALSE(framework_.progressIndicator->isHidden);
    EXPECT_EQ(framework_.progressIndicator->value, 100);
    EXPECT_TRUE(framework_.cancelButton->isHidden);
    EXPECT_TRUE(controller_.terminateEnabled());
    mac_.calls.clear();
    framework_.uninstallButton->press();
    EXPECT_EQ(mac_.calls, CallList{{"terminate"}});
    EXPECT_EQ(framework_.terminations, 1);
}

TEST_F(WindowController, WithoutControlsNothingIsDone) {
    UninstallerWindowController bare(framework_, {});
    bare.awakeFromNib();
    bare.setUninstallBlock([this] { mac_.calls.push_back({"uninstall"}); });
    bare.uninstallAction();
    EXPECT_EQ(mac_.callsOf("uninstall"), CallList{{"uninstall"}});
    bare.installationFinished();
    EXPECT_TRUE(bare.terminateEnabled());
}

using WindowControllerDeathTest = WindowController;

TEST_F(WindowControllerDeathTest, CallingAnUnsetBlockIsFatal) {
    controller_.setUninstallBlock({});
    EXPECT_DEATH(controller_.uninstallAction(), "^Fatal error: The uninstall block is not set\\.\n$");
}

}  // namespace
