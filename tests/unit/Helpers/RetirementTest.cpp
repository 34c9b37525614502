#include "Helpers/Retirement.h"

#include <gtest/gtest.h>

#include "FakeListener.h"
#include "support/FakeMac.h"

namespace {

using TestSupport::CallList;
using Result = TestSupport::FakeTaskRunner::Result;

const std::string kTools = "/Library/PrivilegedHelperTools/";
const std::string kPlists = "/Library/LaunchDaemons/";
const std::string kOwn = "com.norvik.InstallerHelper";
const std::string kSupport = "com.norvik.SupportPrivilegedHelper";
const std::string kBootout = "/bin/launchctl bootout system/";
const std::string kPrint = "/bin/launchctl print system/";
const std::string kIdleJob = "system/x = {\n\tactive count = 0\n\tstate = not running\n}\n";
const std::string kRunningJob = "system/x = {\n\tstate = running\n\tpid = 12\n}\n";

class Retirement : public testing::Test {
  protected:
    Retirement() {
        install(kSupport);
        mac_.tasks.results[kPrint + kSupport].output = kIdleJob;
        mac_.tasks.results[kBootout + kOwn] = {.runsOn = true,
                                               .onLaunch = [this] { mac_.termination.request(); }};
        mac_.dispatch.onWait = [this] { mac_.clock.present += 100'000'000; };
    }

    void install(const std::string& label) {
        mac_.files.addFile(kTools + label);
        mac_.files.addFile(kPlists + label + ".plist");
    }
    void remove(const std::string& label) {
        mac_.files.nodes.erase(kTools + label);
        mac_.files.nodes.erase(kPlists + label + ".plist");
    }
    [[nodiscard]] bool isInstalled(const std::string& label) const {
        return mac_.files.has(kTools + label) && mac_.files.has(kPlists + label + ".plist");
    }
    [[nodiscard]] bool isGone(const std::string& label) const {
        return !mac_.files.has(kTools + label) && !mac_.files.has(kPlists + label + ".plist");
    }

    /// A list that deletes the helper's own tool.
    void runList() {
        retirement_.listBegins();
        end();
    }
    void end() {
        mac_.calls.clear();
        retirement_.listEnds([this] { return anotherWaits_ && anotherWaits_(); });
    }
    [[nodiscard]] CallList launches() const { return mac_.callsOf("launch "); }
    [[nodiscard]] bool launched(const std::string& command) const {
        return !mac_.callsOf("launch " + command).empty();
    }

    TestSupport::FakeMac mac_;
    HelperTests::FakeListener listener_;
    Helpers::Retirement retirement_{kOwn, kSupport, listener_};
    std::function<bool()> anotherWaits_;
};

TEST_F(Retirement, RemovesTheSupportHelperThenTheRemovedToolsJobsThenItsOwn) {
    runList();
    EXPECT_EQ(launches(),
              (CallList{"launch " + kPrint + kSupport, "launch " + kBootout + kSupport,
                        "launch " + kBootout + "com.norvik.DiagnosticUtilityHelper",
                        "launch " + kBootout + "com.norvik.SolutionUpdaterHelper",
                        "launch " + kBootout + "com.norvik.UninstallerHelper", "launch " + kBootout + kOwn}));
    EXPECT_TRUE(isGone(kSupport));
    EXPECT_EQ(mac_.calls.back(), "kill task");
    EXPECT_TRUE(listener_.isStopped);
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

TEST_F(Retirement, RemovesTheSupportHelpersJobBeforeItsTool) {
    runList();
    const auto job = std::find(mac_.calls.begin(), mac_.calls.end(), "launch " + kBootout + kSupport);
    const auto tool = std::find(mac_.calls.begin(), mac_.calls.end(), "remove " + kTools + kSupport);
    ASSERT_NE(tool, mac_.calls.end());
    EXPECT_LT(job, tool);
}

TEST_F(Retirement, RemovesThePackagesFolderThatAKilledSupportHelperLeft) {
    runList();
    EXPECT_EQ(mac_.callsOf("remove private folder "),
              CallList{"remove private folder " + kTools + "com.norvik.SupportPrivilegedHelper.package"});
}

TEST_F(Retirement, LeavesThePackagesFolderWithASupportHelperThatStays) {
    mac_.tasks.results[kPrint + kSupport].output = kRunningJob;
    runList();
    EXPECT_EQ(mac_.callsOf("remove private folder "), CallList());
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
    EXPECT_EQ(launches(), CallList{"launch " + kPrint + kSupport});
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

// The support helper.

TEST_F(Retirement, WaitsForASupportHelperThatIsAboutToLeave) {
    mac_.tasks.firstResults[kPrint + kSupport] = {{.output = kRunningJob}, {.output = kRunningJob}};
    runList();
    EXPECT_EQ(mac_.callsOf("launch " + kPrint).size(), 3U);
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
        EXPECT_EQ(mac_.callsOf("launch " + kPrint).size(), questions);
    }
}

TEST_F(Retirement, SleepsOnASemaphoreThatNobodySignals) {
    runList();
    EXPECT_EQ(mac_.callsOf("semaphore "), CallList{"semaphore 0"});
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
    EXPECT_EQ(launches(), CallList{"launch " + kPrint + kSupport});
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
    EXPECT_EQ(mac_.callsOf("wait until ").size(), 11U);
}

// Without a request nothing tells that launchd has learned of the removal, so there is no answer to wait for.
TEST_F(Retirement, DoesNotWaitForAnAnswerToARequestThatNeverCame) {
    mac_.tasks.results[kBootout + kOwn] = {.runsOn = true, .onLaunch = [this] { install(kOwn); }};
    mac_.dispatch.onWait = [this] { mac_.clock.present += 1'000'000'000U; };
    runList();
    EXPECT_EQ(mac_.callsOf("wait until ").size(), 11U);
}

TEST_F(Retirement, WaitsForLaunchctlUntilTheMomentAtWhichItsTimeIsUp) {
    mac_.tasks.results[kBootout + kOwn] = {.runsOn = true, .onLaunch = [this] {
                                               install(kOwn);
                                               mac_.termination.request();
                                           }};
    mac_.dispatch.onWait = [this] { mac_.clock.present += 1'000'000'000U; };
    runList();
    // One look for requests that came before, the request, then two seconds of one look each.
    EXPECT_EQ(mac_.callsOf("wait until ").size(), 4U);
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
