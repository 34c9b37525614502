#include "WindowFlow.h"

namespace {

using TestSupport::CallList;
using WindowFlowDeathTest = ProductTests::WindowFlow;

TEST_F(WindowFlowDeathTest, AnAbsentWindowIsFatalWhenTheApplicationIsToQuit) {
    framework_.window.reset();
    EXPECT_DEATH(static_cast<void>(delegate_->applicationShouldTerminate()),
                 "^Fatal error: The window is gone\\.\n$");
}

TEST_F(WindowFlowDeathTest, AnAbsentWindowIsFatalForAReport) {
    controller_.uninstallAction();
    framework_.window.reset();
    EXPECT_DEATH(framework_.drainMainQueue(), "^Fatal error: The window is gone\\.\n$");
}

TEST_F(WindowFlowDeathTest, AnAbsentProgressBarIsFatalForAReport) {
    controller_.uninstallAction();
    framework_.progressIndicator.reset();
    EXPECT_DEATH(framework_.drainMainQueue(), "^Fatal error: The progress bar is gone\\.\n$");
}

TEST_F(WindowFlowDeathTest, AnAbsentDescriptionLineIsFatalForAReport) {
    controller_.uninstallAction();
    framework_.progressDescription.reset();
    EXPECT_DEATH(framework_.drainMainQueue(), "^Fatal error: The description line is gone\\.\n$");
}

TEST_F(WindowFlowDeathTest, AnAbsentApplicationIsFatalBeforeAnythingIsSent) {
    framework_.hasApplication = false;
    EXPECT_DEATH(
        {
            controller_.uninstallAction();
            std::abort();
        },
        "^Fatal error: There is no application\\.\n$");
}

TEST_F(WindowFlowDeathTest, AnAbsentApplicationIsNotAskedToQuitAfterAnAlert) {
    mac_.authorization.grants = false;
    framework_.hasApplication = false;
    controller_.uninstallAction();
    EXPECT_EQ(alerts().size(), 1U);
    EXPECT_EQ(framework_.terminations, 0);
}

TEST_F(WindowFlowDeathTest, AnAbsentControllerIsNotAllowedToQuitAfterAnAlert) {
    mac_.authorization.grants = false;
    framework_.window->controller = nullptr;
    controller_.uninstallAction();
    EXPECT_EQ(alerts().size(), 1U);
    EXPECT_EQ(mac_.callsOf("terminate").size(), 1U) << "asked, and refused for want of a controller";
    EXPECT_EQ(framework_.terminations, 0);
    EXPECT_FALSE(controller_.terminateEnabled());
}

TEST_F(WindowFlowDeathTest, AnAbsentWindowIsNeededNeitherAtTheEndOfTheLaunchNorForAnAlert) {
    framework_.window.reset();
    framework_.shouldTerminate = nullptr;
    delegate_->applicationDidFinishLaunching();
    mac_.authorization.grants = false;
    controller_.uninstallAction();
    EXPECT_EQ(framework_.terminations, 1);
}

}  // namespace
