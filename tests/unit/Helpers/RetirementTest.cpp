#include <gtest/gtest.h>

#include "RetirementScene.h"

namespace {

using RetirementTests::kBootout;
using RetirementTests::kOwn;
using RetirementTests::kPlists;
using RetirementTests::kPrint;
using RetirementTests::kRunningJob;
using RetirementTests::kSupport;
using RetirementTests::kTools;
using RetirementTests::Retirement;
using TestSupport::CallList;

TEST_F(Retirement, RemovesTheSupportHelperThenTheRemovedToolsJobsThenItsOwn) {
    runList();
    EXPECT_EQ(launches(), (CallList{{"launch", kPrint + kSupport},
                                    {"launch", kBootout + kSupport},
                                    {"launch", kBootout + "com.norvik.DiagnosticUtilityHelper"},
                                    {"launch", kBootout + "com.norvik.SolutionUpdaterHelper"},
                                    {"launch", kBootout + "com.norvik.UninstallerHelper"},
                                    {"launch", kBootout + kOwn}}));
    EXPECT_TRUE(isGone(kSupport));
    EXPECT_EQ(mac_.calls.back(), TestSupport::Call{"kill task"});
    EXPECT_TRUE(listener_.isStopped);
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

TEST_F(Retirement, RemovesTheSupportHelpersJobBeforeItsTool) {
    runList();
    const auto job =
        std::find(mac_.calls.begin(), mac_.calls.end(), TestSupport::Call("launch", kBootout + kSupport));
    const auto tool =
        std::find(mac_.calls.begin(), mac_.calls.end(), TestSupport::Call("remove", kTools + kSupport));
    ASSERT_NE(tool, mac_.calls.end());
    EXPECT_LT(job, tool);
}

TEST_F(Retirement, RemovesThePackagesFolderThatAKilledSupportHelperLeft) {
    runList();
    EXPECT_EQ(mac_.callsOf("remove private folder"),
              (CallList{{"remove private folder", kTools + "com.norvik.SupportPrivilegedHelper.package"}}));
}

TEST_F(Retirement, LeavesThePackagesFolderWithASupportHelperThatStays) {
    mac_.tasks.results[kPrint + kSupport].output = kRunningJob;
    runList();
    EXPECT_EQ(mac_.callsOf("remove private folder"), CallList());
}

TEST_F(Retirement, LeavesEverythingWhileTheOwnToolIsThere) {
    mac_.files.addFile(kTools + kOwn);
    runList();
    EXPECT_EQ(mac_.calls, CallList());
    EXPECT_FALSE(listener_.isStopped);
}

TEST_F(Retirement, LeavesEverythingWhileTheOwnPropertyListIsThere) {
    mac_.files.addFile(kPlists + kOwn + ".plist");
    runList();
    EXPECT_EQ(mac_.calls, CallList());
}

TEST_F(Retirement, LeavesTheJobOfAToolThatIsStillInstalled) {
    install("com.norvik.SolutionUpdaterHelper");
    runList();
    EXPECT_FALSE(launched(kBootout + "com.norvik.SolutionUpdaterHelper"));
    EXPECT_TRUE(launched(kBootout + "com.norvik.UninstallerHelper"));
}

TEST_F(Retirement, LeavesTheRestToTheListThatWaits) {
    anotherWaits_ = [] { return true; };
    runList();
    EXPECT_EQ(launches(), (CallList{{"launch", kPrint + kSupport}}));
    EXPECT_TRUE(isInstalled(kSupport));
}

TEST_F(Retirement, StaysWhenAListComesWhileTheSupportHelperIsRemoved) {
    anotherWaits_ = [this] { return isGone(kSupport); };
    runList();
    EXPECT_TRUE(isGone(kSupport));
    EXPECT_FALSE(launched(kBootout + kOwn));
    EXPECT_FALSE(listener_.isStopped);
}

TEST_F(Retirement, StaysWhenTheOwnToolComesBackWhileTheSupportHelperIsRemoved) {
    mac_.tasks.results[kBootout + kSupport].onLaunch = [this] { install(kOwn); };
    runList();
    EXPECT_FALSE(launched(kBootout + kOwn));
    EXPECT_FALSE(listener_.isStopped);
}

// The own job.

TEST_F(Retirement, DoesNotWaitForLaunchctlOnceLaunchdHasAskedItToEnd) {
    const std::uint64_t start = mac_.clock.present;
    runList();
    EXPECT_LE(mac_.clock.present - start, 200'000'000U);
    EXPECT_EQ(mac_.callsOf("kill task").size(), 1U);
}

TEST_F(Retirement, StaysWhenLaunchdRefusesTheRemoval) {
    mac_.tasks.results[kBootout + kOwn] = {.status = 5};
    runList();
    EXPECT_FALSE(listener_.isStopped);
    EXPECT_EQ(mac_.callsOf("kill task"), CallList());
}

TEST_F(Retirement, WaitsForLaunchdUntilTheMomentAtWhichItsTimeIsUp) {
    mac_.tasks.results[kBootout + kOwn] = {.runsOn = true};
    mac_.dispatch.onWait = [this] { mac_.clock.present += 1'000'000'000U; };
    runList();
    // One look for requests that came before, then one a second.
    EXPECT_EQ(mac_.callsOf("wait until").size(), 11U);
}

// Without a request nothing tells that launchd has learned of the removal, so there is no answer to wait for.
TEST_F(Retirement, DoesNotWaitForAnAnswerToARequestThatNeverCame) {
    mac_.tasks.results[kBootout + kOwn] = {.runsOn = true, .onLaunch = [this] { install(kOwn); }};
    mac_.dispatch.onWait = [this] { mac_.clock.present += 1'000'000'000U; };
    runList();
    EXPECT_EQ(mac_.callsOf("wait until").size(), 11U);
}

TEST_F(Retirement, WaitsForLaunchctlUntilTheMomentAtWhichItsTimeIsUp) {
    mac_.tasks.results[kBootout + kOwn] = {.runsOn = true, .onLaunch = [this] {
                                               install(kOwn);
                                               mac_.termination.request();
                                           }};
    mac_.dispatch.onWait = [this] { mac_.clock.present += 1'000'000'000U; };
    runList();
    // One look for requests that came before, the request, then two seconds of one look each.
    EXPECT_EQ(mac_.callsOf("wait until").size(), 4U);
}

TEST_F(Retirement, GivesUpOnALaunchctlThatNeverReachesLaunchd) {
    mac_.tasks.results[kBootout + kOwn] = {.runsOn = true};
    const std::uint64_t start = mac_.clock.present;
    runList();
    EXPECT_GE(mac_.clock.present - start, 10'000'000'000U);
    EXPECT_LT(mac_.clock.present - start, 12'000'000'000U);
    EXPECT_EQ(mac_.callsOf("kill task").size(), 1U);
    EXPECT_FALSE(listener_.isStopped);
}

TEST_F(Retirement, LetsLaunchctlFinishWhenTheRequestCameFromABlessingThatReplacesTheHelper) {
    int waits = 0;
    mac_.tasks.results[kBootout + kOwn].onLaunch = [this] {
        install(kOwn);
        mac_.termination.request();
    };
    mac_.dispatch.onWait = [this, &waits] {
        ++waits;
        mac_.clock.present += 100'000'000;
    };
    const std::uint64_t start = mac_.clock.present;
    runList();
    EXPECT_GE(mac_.clock.present - start, 2'000'000'000U);
    EXPECT_LT(mac_.clock.present - start, 3'000'000'000U);
    EXPECT_TRUE(isInstalled(kOwn));
    EXPECT_TRUE(listener_.isStopped);
}

TEST_F(Retirement, DoesNotTakeAnEarlierRequestForTheAnswerToItsOwn) {
    mac_.tasks.results[kBootout + kOwn] = {.runsOn = true};
    mac_.termination.request();
    mac_.termination.request();
    const std::uint64_t start = mac_.clock.present;
    runList();
    EXPECT_GE(mac_.clock.present - start, 10'000'000'000U);
}

TEST_F(Retirement, SurvivesALaunchctlThatCannotBeRun) {
    mac_.tasks.notExecutable = {"/bin/launchctl"};
    runList();
    EXPECT_TRUE(isInstalled(kSupport));
    EXPECT_FALSE(listener_.isStopped);
}

TEST_F(Retirement, ARequestToEndStopsTheListenerAlsoBetweenLists) {
    EXPECT_FALSE(listener_.isStopped);
    mac_.termination.request();
    EXPECT_TRUE(listener_.isStopped);
}

}  // namespace
