#include <gtest/gtest.h>

#include "RetirementScene.h"

namespace {

using RetirementTests::kBootout;
using RetirementTests::kIdleJob;
using RetirementTests::kOwn;
using RetirementTests::kPrint;
using RetirementTests::kRunningJob;
using RetirementTests::kSupport;
using RetirementTests::Result;
using RetirementTests::Retirement;
using TestSupport::CallList;

// The support helper.

TEST_F(Retirement, WaitsForASupportHelperThatIsAboutToLeave) {
    mac_.tasks.firstResults[kPrint + kSupport] = {{.output = kRunningJob}, {.output = kRunningJob}};
    runList();
    EXPECT_EQ(mac_.callsOf("launch", kPrint).size(), 3U);
    EXPECT_TRUE(isGone(kSupport));
    EXPECT_TRUE(launched(kBootout + kOwn));
}

TEST_F(Retirement, LeavesASupportHelperThatRunsOnAndRemovesTheRest) {
    mac_.tasks.results[kPrint + kSupport].output = kRunningJob;
    const std::uint64_t start = mac_.clock.present;
    retirement_.listBegins();
    end();
    EXPECT_FALSE(launched(kBootout + kSupport));
    EXPECT_TRUE(isInstalled(kSupport));
    EXPECT_TRUE(launched(kBootout + kOwn));
    EXPECT_GE(mac_.clock.present - start, 5'000'000'000U);
    EXPECT_LT(mac_.clock.present - start, 6'000'000'000U);
}

TEST_F(Retirement, LooksAtTheSupportHelperUntilTheMomentAtWhichItsTimeIsUp) {
    mac_.tasks.results[kPrint + kSupport].output = kRunningJob;
    for (const auto& [step, questions] : {std::pair{1'000'000'000U, 6U}, std::pair{3'000'000'000U, 3U}}) {
        mac_.dispatch.onWait = [this, step = step] { mac_.clock.present += step; };
        runList();
        EXPECT_EQ(mac_.callsOf("launch", kPrint).size(), questions);
    }
}

TEST_F(Retirement, SleepsOnASemaphoreThatNobodySignals) {
    runList();
    EXPECT_EQ(mac_.callsOf("semaphore"), (CallList{{"semaphore", 0}}));
}

TEST_F(Retirement, KeepsTheToolWhenLaunchctlCannotBeRunAnyMore) {
    mac_.tasks.results[kPrint + kSupport].onLaunch = [this] {
        mac_.tasks.notExecutable = {"/bin/launchctl"};
    };
    runList();
    EXPECT_TRUE(isInstalled(kSupport));
}

TEST_F(Retirement, StopsWaitingForTheSupportHelperWhenAListComes) {
    mac_.tasks.results[kPrint + kSupport].output = kRunningJob;
    anotherWaits_ = [] { return true; };
    runList();
    EXPECT_EQ(launches(), (CallList{{"launch", kPrint + kSupport}}));
}

TEST_F(Retirement, LeavesASupportHelperThatWasReplacedSinceTheListBegan) {
    retirement_.listBegins();
    install(kSupport);
    end();
    EXPECT_FALSE(launched(kBootout + kSupport));
    EXPECT_TRUE(isInstalled(kSupport));
    EXPECT_TRUE(launched(kBootout + kOwn));
}

TEST_F(Retirement, LeavesASupportHelperThatCameSinceTheListBegan) {
    remove(kSupport);
    retirement_.listBegins();
    install(kSupport);
    end();
    EXPECT_FALSE(launched(kBootout + kSupport));
    EXPECT_TRUE(isInstalled(kSupport));
}

TEST_F(Retirement, RemovesASupportHelperThatTheNextListFound) {
    retirement_.listBegins();
    install(kSupport);
    retirement_.listBegins();
    end();
    EXPECT_TRUE(isGone(kSupport));
}

TEST_F(Retirement, LeavesTheFilesOfASupportHelperThatIsBlessedWhileItsJobIsRemoved) {
    mac_.tasks.results[kBootout + kSupport].onLaunch = [this] { install(kSupport); };
    runList();
    EXPECT_TRUE(isInstalled(kSupport));
}

TEST_F(Retirement, LeavesASupportHelperWhoseJobLaunchdKeeps) {
    mac_.tasks.results[kBootout + kSupport].status = 5;
    runList();
    EXPECT_TRUE(isInstalled(kSupport));
    EXPECT_TRUE(launched(kBootout + kOwn));
}

TEST_F(Retirement, RemovesTheFilesOfASupportHelperWithoutAJob) {
    mac_.tasks.results[kPrint + kSupport] = {.status = 113};
    mac_.tasks.results[kBootout + kSupport].status = 3;
    runList();
    EXPECT_TRUE(isGone(kSupport));
}

TEST_F(Retirement, TakesAnAnswerThatItDoesNotUnderstandForARunningHelper) {
    for (const Result& answer :
         {Result{.output = ""}, Result{.output = "state = not running\n"},
          Result{.output = kIdleJob, .status = 1}, Result{.output = "\tstate = spawn scheduled\n"},
          Result{.output = kIdleJob + "\tpid = 7\n"}, Result{.output = "\t\tstate = not running\n"},
          Result{.status = 113, .reason = Platform::TerminationReason::uncaughtSignal}}) {
        mac_.tasks.results[kPrint + kSupport] = answer;
        runList();
        EXPECT_FALSE(launched(kBootout + kSupport)) << answer.output << answer.status;
    }
}

TEST_F(Retirement, UnderstandsTheAnswerOfOlderSystems) {
    mac_.tasks.results[kPrint + kSupport].output = "x = {\n\tstate = waiting\n}\n";
    runList();
    EXPECT_TRUE(isGone(kSupport));
}

}  // namespace
