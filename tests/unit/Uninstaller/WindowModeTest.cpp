#include "Uninstaller/UninstallerProgram.h"
#include "Uninstaller/WindowMode.h"

#include <cstring>

#include <gtest/gtest.h>

#include "support/FakeApplication.h"

namespace {

using TestSupport::CallList;
using Uninstall_Sentrel::runApplication;
using Uninstall_Sentrel::runWindowApplication;
using Uninstall_Sentrel::WindowProgram;

class WindowMode : public testing::Test {
  protected:
    /// The framework that the fake library hands out.
    static TestSupport::FakeApplicationFramework* offered;

    static Uninstall_Sentrel::ApplicationFramework* entry(std::string* error) {
        if (offered == nullptr) {
            *error = "there is no display.";
        }
        return offered;
    }

    WindowMode() {
        offered = &framework_;
        Uninstall_Sentrel::ApplicationFrameworkEntry* const function = &entry;
        static_assert(sizeof function == sizeof mac_.codeModules.symbolAddress);
        std::memcpy(&mac_.codeModules.symbolAddress, &function, sizeof function);
        mac_.bundles.mainInfo = {{"CFBundleShortVersionString", "6.4"}, {"CFBundleVersion", "640"}};
    }

    TestSupport::FakeMac mac_;
    TestSupport::FakeApplicationFramework framework_{mac_};
    char name_[16] = "program";
    char option_[16] = "--silent=1";
    char* arguments_[3] = {name_, option_, nullptr};
};

TestSupport::FakeApplicationFramework* WindowMode::offered = nullptr;

using WindowModeDeathTest = WindowMode;

TEST_F(WindowMode, LoadsTheWindowsLibraryAndHandsTheArgumentsToTheMainRoutineThenRuns) {
    runWindowApplication(2, arguments_);
    EXPECT_EQ(
        mac_.calls,
        (CallList{{"load", "/Applications/Uninstall Sentrel.app/Contents/Frameworks/UninstallerWindow.dylib",
                   "SentrelApplicationFramework"},
                  {"main", "program", "--silent=1"},
                  {"run"}}));
}

// The window loads the maker's frameworks, which may hold classes of the same names.
TEST_F(WindowMode, OfTheProgramBeginsAfterItsClassesAreKnown) {
    Uninstall_Sentrel::runProgram(2, arguments_);
    EXPECT_EQ(
        mac_.calls,
        (CallList{{"register classes", 14},
                  {"load", "/Applications/Uninstall Sentrel.app/Contents/Frameworks/UninstallerWindow.dylib",
                   "SentrelApplicationFramework"},
                  {"main", "program", "--silent=1"},
                  {"run"}}));
}

TEST_F(WindowMode, ALibraryThatCannotBeLoadedIsSaidOnStandardErrorAndNothingRuns) {
    mac_.codeModules.symbolAddress = nullptr;
    testing::internal::CaptureStderr();
    runWindowApplication(2, arguments_);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "The window cannot be shown: no such library\n"
              "To uninstall without a window: sudo \"Uninstall Sentrel\" --silent\n");
    EXPECT_EQ(mac_.callsOf("main"), CallList());
    EXPECT_TRUE(mac_.log.lines.empty());
}

TEST_F(WindowMode, WithoutADisplayItSaysSo) {
    offered = nullptr;
    testing::internal::CaptureStderr();
    runWindowApplication(2, arguments_);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "The window cannot be shown: there is no display.\n"
              "To uninstall without a window: sudo \"Uninstall Sentrel\" --silent\n");
    EXPECT_EQ(mac_.callsOf("main"), CallList());
}

TEST_F(WindowMode, TheInterfaceOnceLoadedIsTiedTogether) {
    framework_.session = [this](Uninstall_Sentrel::ApplicationProgram& program) {
        framework_.window->controller = program.interfaceDidLoad(framework_.outlets());
        program.applicationDidFinishLaunching();
        EXPECT_TRUE(program.applicationShouldTerminate());
        mac_.authorization.grants = false;
        framework_.shouldTerminate = [&program] { return program.applicationShouldTerminate(); };
        program.uninstallAction();
        EXPECT_EQ(mac_.callsOf("alert").size(), 3U);
        program.cancelAction();
        EXPECT_TRUE(program.windowShouldClose());
        EXPECT_EQ(mac_.callsOf("terminate").size(), 5U);
    };
    runApplication(framework_, 1, arguments_);
    EXPECT_EQ(mac_.calls.back(), TestSupport::Call{"run"});
}

TEST_F(WindowMode, BeforeTheInterfaceIsLoadedTheWindowMayCloseAndActionsDoNothing) {
    WindowProgram program(framework_);
    EXPECT_TRUE(program.windowShouldClose());
    program.uninstallAction();
    program.cancelAction();
    EXPECT_EQ(mac_.calls, CallList());
}

TEST_F(WindowMode, AVersionThatIsItsOwnBuildIsSaidOnce) {
    mac_.bundles.mainInfo = {{"CFBundleShortVersionString", "6.4"}, {"CFBundleVersion", "6.4"}};
    EXPECT_EQ(WindowProgram(framework_).version(), "6.4");
}

TEST_F(WindowMode, InterfaceTextsComeFromTheirTable) {
    mac_.bundles.mainTexts = {{{"Interface", "cancel"}, "Abbrechen"}};
    EXPECT_EQ(WindowProgram(framework_).interfaceText("cancel"), "Abbrechen");
}

TEST_F(WindowMode, InterfaceTextsWithoutTheirTableArePlainEnglish) {
    const WindowProgram program(framework_);
    EXPECT_EQ(program.interfaceText("headline"), "Uninstall");
    EXPECT_EQ(program.interfaceText("label"), "%@ will be removed from this Mac.");
    EXPECT_EQ(program.interfaceText("uninstall"), "Uninstall");
    EXPECT_EQ(program.interfaceText("cancel"), "Cancel");
    EXPECT_EQ(program.interfaceText("duration"), "This can take up to a minute.");
    EXPECT_EQ(program.interfaceText("about"), "About Uninstall Sentrel");
    EXPECT_EQ(program.interfaceText("hide"), "Hide Uninstall Sentrel");
    EXPECT_EQ(program.interfaceText("quit"), "Quit Uninstall Sentrel");
}

TEST_F(WindowModeDeathTest, ATextThatTheInterfaceDoesNotHaveIsFatal) {
    const WindowProgram program(framework_);
    EXPECT_DEATH(static_cast<void>(program.interfaceText("other")),
                 "^Fatal error: The interface has no text \"other\"\\.\n$");
}

TEST_F(WindowMode, FrameworksAreLookedForInTheProgramAndThenInTheProduct) {
    EXPECT_EQ(WindowProgram(framework_).frameworkFolders(),
              (std::vector<std::string>{"/Applications/Uninstall Sentrel.app/Contents/Frameworks",
                                        "/Applications/Sentrel.app/Contents/Frameworks"}));
}

TEST_F(WindowMode, VersionAndResourcesAreTheBundles) {
    const WindowProgram program(framework_);
    EXPECT_EQ(program.version(), "6.4 (640)");
    mac_.bundles.mainInfo = {{"CFBundleShortVersionString", "6.4"}};
    EXPECT_EQ(program.version(), "6.4");
    mac_.bundles.mainInfo.clear();
    EXPECT_EQ(program.version(), "");
    EXPECT_EQ(program.resourcePath("AppIcon", "png"), "");
    mac_.bundles.mainResources = {"AppIcon.png"};
    EXPECT_EQ(program.resourcePath("AppIcon", "png"),
              "/Applications/Uninstall Sentrel.app/Contents/Resources/AppIcon.png");
}

TEST_F(WindowModeDeathTest, NoApplicationAfterTheMainRoutineIsFatal) {
    framework_.hasApplication = false;
    EXPECT_DEATH(runApplication(framework_, 1, arguments_), "^Fatal error: There is no application\\.\n$");
}

}  // namespace
