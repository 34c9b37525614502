#include "Uninstaller/SilentUninstall.h"
#include "Uninstaller/UninstallerProgram.h"

#include <gtest/gtest.h>

#include "support/FakeHelper.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;

const std::string kFound = installerLine("found installed version true, updatable: true");

class SilentMode : public testing::Test {
  protected:
    SilentMode() {
        helper_.serve(mac_);
        mac_.bundles.mainInfo = {{"CFBundleShortVersionString", "6.4"}, {"CFBundleVersion", "640"}};
        mac_.bundles.mainResources = {"SwiftRuntimeForCommandLineTools.pkg"};
        mac_.bundles.install("/Applications/Sentrel.app", "6.4", "640");
        mac_.files.addFolder("/Applications/Sentrel.app");
        mac_.files.addFolder("/Library/Application Support/NORVIK/SNT");
    }

    TestSupport::FakeMac mac_;
    TestSupport::FakeHelper helper_;
};

TEST(SilentSwitch, BothFormsSelectSilentModeAtAnyPlace) {
    EXPECT_TRUE(Uninstall_Sentrel::isSilent({"program", "-s"}));
    EXPECT_TRUE(Uninstall_Sentrel::isSilent({"program", "--silent"}));
    EXPECT_TRUE(Uninstall_Sentrel::isSilent({"program", "x", "--silent", "y"}));
}

TEST(SilentSwitch, AnyOtherArgumentIsIgnored) {
    EXPECT_FALSE(Uninstall_Sentrel::isSilent({"program", "-S"}));
    EXPECT_FALSE(Uninstall_Sentrel::isSilent({"program", "-silent"}));
    EXPECT_FALSE(Uninstall_Sentrel::isSilent({"program", "--silent=1"}));
    EXPECT_FALSE(Uninstall_Sentrel::isSilent({"program", "--Silent", "-ss", "- s", ""}));
    EXPECT_FALSE(Uninstall_Sentrel::isSilent({"program"}));
}

TEST_F(SilentMode, RunsTheWholeSequenceInOrderAndLogsSuccess) {
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.log.lines,
              (Lines{kFound, "Uninstallation finished", installerLine("Uninstallation finished.")}));
    EXPECT_EQ(helper_.lists.at(0).size(), 75U);
    const TestSupport::CallList expectedStart{{"authorize", "system.privilege.admin", 2},
                                              {"bless", "com.norvik.InstallerHelper"},
                                              {"bless", "com.norvik.SupportPrivilegedHelper"},
                                              {"end of authorization"},
                                              {"connection", "com.norvik.SupportPrivilegedHelper", 4096}};
    ASSERT_GE(mac_.calls.size(), expectedStart.size());
    EXPECT_EQ(TestSupport::CallList(mac_.calls.begin(),
                                    mac_.calls.begin() + static_cast<std::ptrdiff_t>(expectedStart.size())),
              expectedStart);
    const TestSupport::CallList expectedEnd{{"semaphore", 0},
                                            {"connection", "com.norvik.InstallerHelper", 4096},
                                            {"set invalidation handler"},
                                            {"set interruption handler"},
                                            {"interface", "CommandExecuting"},
                                            {"resume", "com.norvik.InstallerHelper"},
                                            {"proxy"},
                                            {"wait until", 1060000000000}};
    ASSERT_GE(mac_.calls.size(), expectedEnd.size());
    EXPECT_EQ(TestSupport::CallList(mac_.calls.end() - static_cast<std::ptrdiff_t>(expectedEnd.size()),
                                    mac_.calls.end()),
              expectedEnd);
}

TEST_F(SilentMode, OfTheProgramBeginsAfterItsClassesAreKnownAndLoadsNoWindow) {
    char name[] = "program";
    char option[] = "-s";
    char* arguments[] = {name, option, nullptr};
    Uninstall_Sentrel::runProgram(2, arguments);
    EXPECT_EQ(mac_.calls.front(), (TestSupport::Call{"register classes", 14}));
    EXPECT_EQ(mac_.callsOf("load"), TestSupport::CallList());
    EXPECT_EQ(mac_.log.lines.back(), installerLine("Uninstallation finished."));
}

TEST_F(SilentMode, WithoutAuthorizationStopsBeforeAnyBlessing) {
    mac_.authorization.grants = false;
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.log.lines, (Lines{"Helper authorization and blessing failed. Quitting...",
                                     installerLine("Uninstallation failed.")}));
    EXPECT_EQ(mac_.callsOf("bless"), TestSupport::CallList());
}

TEST_F(SilentMode, AFailedBlessingOfTheInstallerHelperEndsTheRun) {
    mac_.serviceManagement.failures["com.norvik.InstallerHelper"] = {"no", 4};
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.log.lines,
              (Lines{"SMJobBless error: no", "Helper authorization and blessing failed. Quitting...",
                     installerLine("Uninstallation failed.")}));
    EXPECT_EQ(mac_.callsOf("bless"), (TestSupport::CallList{{"bless", "com.norvik.InstallerHelper"}}));
}

TEST_F(SilentMode, AFailedBlessingOfTheSupportHelperEndsTheRun) {
    mac_.serviceManagement.failures["com.norvik.SupportPrivilegedHelper"] = {"no", 4};
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.log.lines,
              (Lines{"SMJobBless error: no", "Helper authorization and blessing failed. Quitting...",
                     installerLine("Uninstallation failed.")}));
    EXPECT_TRUE(mac_.xpc.connections.empty());
}

TEST_F(SilentMode, AFailedRuntimePackageEndsTheRun) {
    helper_.packageError = Platform::Error{"bad package", 1};
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.log.lines, (Lines{"bad package", "Failed to install Swift runtime support. Quitting...",
                                     installerLine("Uninstallation failed.")}));
    EXPECT_TRUE(helper_.lists.empty());
}

TEST_F(SilentMode, AProductThatMustNotBeRemovedEndsTheRun) {
    mac_.bundles.install("/Applications/Sentrel.app", "7.0", "700");
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.log.lines,
              (Lines{kFound, "Antivirus cannot be uninstalled", installerLine("Uninstallation failed.")}));
    EXPECT_TRUE(helper_.lists.empty());
}

TEST_F(SilentMode, NoProductAtAllCannotBeUninstalled) {
    mac_.files.nodes.clear();
    mac_.bundles.infoByPath.clear();
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.log.lines,
              (Lines{"Antivirus cannot be uninstalled", installerLine("Uninstallation failed.")}));
}

TEST_F(SilentMode, WithoutTheLastReportWaitsFor60SecondsAndLogsOnlyTheResult) {
    helper_.reportsAtMost = 74;
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.log.lines, (Lines{kFound, installerLine("Uninstallation failed.")}));
    EXPECT_EQ(mac_.calls.back(), (TestSupport::Call{"wait until", 1060000000000}));
}

TEST_F(SilentMode, NoReportAtAllAsFromAnEmptyListTimesOutAfter60Seconds) {
    helper_.reportsAtMost = 0;
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.log.lines, (Lines{kFound, installerLine("Uninstallation failed.")}));
}

TEST_F(SilentMode, TakesTheDeadlineOnlyAfterTheListWasHandedOver) {
    // Handing the list over takes ten seconds here.
    mac_.xpc.services["com.norvik.InstallerHelper"] =
        [this](std::string_view, std::vector<Platform::XPCValue>, const Platform::XPCReply&) {
            mac_.clock.present += 10'000'000'000;
        };
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.calls.back(), (TestSupport::Call{"wait until", 1070000000000}));
}

TEST_F(SilentMode, ReportsThatArriveWhileItWaitsEndTheWait) {
    std::shared_ptr<Platform::XPCObject> delegate;
    mac_.xpc.services["com.norvik.InstallerHelper"] =
        [&delegate](std::string_view, std::vector<Platform::XPCValue> arguments, const Platform::XPCReply&) {
            delegate = std::get<std::shared_ptr<Platform::XPCObject>>(arguments.at(1));
        };
    mac_.dispatch.onWait = [&delegate] {
        for (int i = 0; i < 75; ++i) {
            std::vector<Platform::XPCValue> report;
            report.emplace_back(std::string("d"));
            report.emplace_back(std::int32_t{1});
            delegate->message("commandExecutingDidExecuteCommand:withWeight:", std::move(report), {});
        }
    };
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(mac_.log.lines,
              (Lines{kFound, "Uninstallation finished", installerLine("Uninstallation finished.")}));
}

TEST_F(SilentMode, TheFinishedLineIsWrittenBeforeTheWaitIsEnded) {
    std::vector<Lines> linesAtSignal;
    mac_.dispatch.onSignal = [&] { linesAtSignal.push_back(mac_.log.lines); };
    Uninstall_Sentrel::runSilently();
    EXPECT_EQ(linesAtSignal, (std::vector<Lines>{{kFound, "Uninstallation finished"}}));
}

TEST_F(SilentMode, TimeOutIs60Seconds) {
    EXPECT_EQ(Uninstall_Sentrel::kUninstallationTimeout.count(), 60);
}

}  // namespace
