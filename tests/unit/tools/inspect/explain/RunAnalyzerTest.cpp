// How the entries of a log become runs.

#include "inspect/explain/RunAnalyzer.h"

#include <gtest/gtest.h>

#include <utility>

#include "InstallCommon/CommandLists.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "SampleRun.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace InspectUnitTests {

namespace {

using Inspect::LogEntry;
using Inspect::RunEnding;
using Inspect::StepOutcome;
using TestSupport::installerLine;
using Words = std::vector<std::string>;

constexpr const char* kHelper = "com.norvik.InstallerHelper";
constexpr const char* kSupport = "com.norvik.SupportPrivilegedHelper";

const std::string kFound = installerLine("found installed version true, updatable: ");
const std::string kFinished = installerLine("Uninstallation finished.");
const std::string kFailed = installerLine("Uninstallation failed.");
const std::string kNotAuthorized = "Helper authorization and blessing failed. Quitting...";
const std::string kNoPackage = "Failed to install Swift runtime support. Quitting...";
const std::string kRefused = "Antivirus cannot be uninstalled";
/// Lines of the steps 1 and 31.
const std::string kStep1 =
    "[SNTM Installer]\nError description: Could not find service \"com.norvik.containmentd\" in domain for "
    "system\n;\ntermination status: 113;\ntermination reason: exit.";
const std::string kStep31 = installerLine("Removed at /Applications/Sentrel.app");

class Analyzer : public testing::Test {
  protected:
    void add(const std::string& program, int pid, const std::string& text) {
        LogEntry entry;
        entry.program = program;
        entry.pid = pid;
        entry.text = text;
        entry.time = "at " + std::to_string(++seconds_);
        entry.seconds = seconds_;
        analyzer_.add(entry);
    }
    void uninstaller(int pid, const std::string& text) { add("Uninstall Sentrel", pid, text); }
    void helper(int pid, const std::string& text) { add(kHelper, pid, text); }
    /// All lines of the last step, with which the list ends.
    void helperEnds(int pid) {
        const auto commands = InstallCommon::CommandLists::uninstallation();
        const auto& last = dynamic_cast<const InstallCommon::RemoveCommand&>(*commands.back());
        for (const auto& item : last.itemsToRemove()) {
            helper(pid, installerLine("Removed at ") + item.path.path());
            helper(pid, installerLine("Removed at /Library/Application Support/NORVIK/SNT/Repair") +
                            item.path.path());
        }
    }
    [[nodiscard]] std::optional<Inspect::RunAnalyzer::Standing> standing() const {
        return analyzer_.standing();
    }
    /// The runs so far; what is added afterwards is another log.
    [[nodiscard]] std::vector<LogRun> finish() {
        return std::exchange(analyzer_, Inspect::RunAnalyzer()).finish();
    }
    [[nodiscard]] LogRun onlyRun() {
        const std::vector<LogRun> runs = finish();
        EXPECT_EQ(runs.size(), 1U);
        return runs.at(0);
    }

  private:
    TestSupport::FakeMac mac_;
    int seconds_ = 0;
    Inspect::RunAnalyzer analyzer_;
};

TEST_F(Analyzer, FindsNoRunInOtherProgramsEntries) {
    add("kernel", 0, kFinished);
    add(kSupport, 5, "words");
    add("launchd", 1, "Blessing of it failed");
    add("uninstall Sentrel", 5, kFinished);
    helper(20, "no line of a list");
    EXPECT_TRUE(finish().empty());
}

TEST_F(Analyzer, KnowsARunFromItsFirstLineToItsLast) {
    add("kernel", 0, "first");
    uninstaller(18, kFound + "true");
    helper(20, kStep1);
    helper(20, kStep31);
    uninstaller(18, "Uninstallation finished");
    uninstaller(18, kFinished);
    add("kernel", 0, "last");
    const LogRun run = onlyRun();
    EXPECT_EQ(run.number, 1U);
    EXPECT_EQ(run.ending, RunEnding::finished);
    EXPECT_EQ(run.began, "at 2");
    EXPECT_EQ(run.ended, "at 6");
    EXPECT_EQ(run.beganSeconds, 2);
    EXPECT_EQ(run.endedSeconds, 6);
    EXPECT_EQ(run.uninstaller, 18);
    EXPECT_EQ(run.helper, 20);
    EXPECT_EQ(run.consoleFound, true);
    EXPECT_EQ(run.reached, 31U);
    EXPECT_TRUE(run.helperFinished);
    EXPECT_FALSE(run.helperDied);
    EXPECT_EQ(run.words, Words{});
    ASSERT_EQ(run.steps.size(), 75U);
    EXPECT_EQ(run.steps[0].outcome, StepOutcome::notThere);
    EXPECT_EQ(run.steps[0].first, 3);
    EXPECT_EQ(run.steps[30].outcome, StepOutcome::done);
    EXPECT_EQ(run.steps[30].last, 4);
    EXPECT_EQ(run.steps[31].outcome, StepOutcome::unknown);
}

TEST_F(Analyzer, TellsWhetherTheConsoleWasFound) {
    uninstaller(18, kFound + "false");
    EXPECT_EQ(onlyRun().consoleFound, false);
}

TEST_F(Analyzer, KnowsWhyARunWasRefused) {
    const auto refused = [this](const Words& lines, const std::string& last) {
        for (const std::string& line : lines) {
            uninstaller(18, line);
        }
        uninstaller(18, last);
        return onlyRun();
    };
    EXPECT_EQ(refused({kNotAuthorized}, kFailed).ending, RunEnding::notAuthorized);
    EXPECT_EQ(refused({kNoPackage}, kFailed).ending, RunEnding::packageNotInstalled);
    EXPECT_EQ(refused({kRefused}, kFailed).ending, RunEnding::nothingInstalled);
    EXPECT_EQ(refused({kFound + "false", kRefused}, kFailed).ending, RunEnding::nothingInstalled);
    EXPECT_EQ(refused({kFound + "true", kRefused}, kFailed).ending, RunEnding::newerInstalled);
    EXPECT_EQ(refused({}, kFailed).ending, RunEnding::timedOut);
    // In a window nothing is said at the end.
    EXPECT_EQ(refused({}, kNotAuthorized).ending, RunEnding::notAuthorized);
    EXPECT_EQ(refused({}, "words").ending, RunEnding::cutOff);
    EXPECT_EQ(refused({kNotAuthorized}, kFinished).ending, RunEnding::finished);
}

TEST_F(Analyzer, KeepsTheWordsOfARun) {
    uninstaller(18, "first");
    helper(20, "before the list");
    helper(20, kStep1);
    helper(20, "in the list");
    add(kSupport, 5, "the package is damaged");
    add("smd", 6, "Blessing of com.norvik failed");
    add("smd", 6, "The Blessing of com.norvik failed");
    EXPECT_EQ(onlyRun().words, (Words{"first", "before the list", "in the list", "the package is damaged",
                                      "Blessing of com.norvik failed"}));
}

TEST_F(Analyzer, KeepsOthersWordsUntilTheRunHasEnded) {
    uninstaller(18, "first");
    uninstaller(18, kFinished);
    add(kSupport, 5, "too late");
    add("smd", 6, "Blessing of com.norvik failed");
    EXPECT_EQ(onlyRun().words, Words{"first"});
}

TEST_F(Analyzer, GivesOthersWordsToTheRunThatBeganLast) {
    uninstaller(18, "first");
    uninstaller(19, "second");
    add(kSupport, 5, "the package is damaged");
    uninstaller(18, "third");
    const std::vector<LogRun> runs = finish();
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].words, (Words{"first", "third"}));
    EXPECT_EQ(runs[1].words, (Words{"second", "the package is damaged"}));
}

TEST_F(Analyzer, BoundsTheWordsOfARun) {
    uninstaller(18, std::string(5000, 'x'));
    for (int number = 2; number <= 60; ++number) {
        uninstaller(18, std::to_string(number));
    }
    const Words words = onlyRun().words;
    ASSERT_EQ(words.size(), 50U);
    EXPECT_EQ(words.front(), std::string(4096, 'x'));
    EXPECT_EQ(words.back(), "50");
}

TEST_F(Analyzer, KnowsThatTheHelperDied) {
    for (const char* words : {"was ended by signal 9", "Service exited with abnormal code",
                              "exited due to SIGKILL", "exited with status 1"}) {
        const std::string line = std::string("Job ") + kHelper + ' ' + words;
        helper(20, kStep1);
        add("launchd", 1, line);
        const LogRun run = onlyRun();
        EXPECT_TRUE(run.helperDied) << words;
        EXPECT_EQ(run.words, Words{line});
    }
}

TEST_F(Analyzer, KnowsThatTheHelperWentThroughTheList) {
    helper(20, kStep1);
    helperEnds(20);
    EXPECT_EQ(standing()->settled, 75U);
    add("launchd", 1, std::string("Job ") + kHelper + " exited with status 0");
    const LogRun run = onlyRun();
    EXPECT_EQ(run.ending, RunEnding::finished);
    EXPECT_TRUE(run.helperFinished);
    EXPECT_FALSE(run.helperDied);
    EXPECT_EQ(run.reached, 75U);
    EXPECT_EQ(run.steps.at(74).outcome, StepOutcome::done);
}

TEST_F(Analyzer, KnowsThatTheHelperWentOnAfterATimeOut) {
    uninstaller(18, kFailed);
    helper(20, kStep1);
    EXPECT_FALSE(onlyRun().helperFinished);
    uninstaller(18, kFailed);
    helper(20, kStep1);
    helperEnds(20);
    const LogRun run = onlyRun();
    EXPECT_EQ(run.ending, RunEnding::timedOut);
    EXPECT_TRUE(run.helperFinished);
}

TEST_F(Analyzer, DoesNotTakeOtherWordsForTheHelpersDeath) {
    helper(20, kStep1);
    add("launchd", 1, "Job com.example was ended by signal 9");
    add("launchd", 1, std::string("Job ") + kHelper + " was started");
    const LogRun run = onlyRun();
    EXPECT_FALSE(run.helperDied);
    EXPECT_EQ(run.words, Words{});
    // Before the helper's first line.
    uninstaller(18, "first");
    add("launchd", 1, std::string("Job ") + kHelper + " was ended by signal 9");
    EXPECT_FALSE(onlyRun().helperDied);
}

TEST_F(Analyzer, GivesAHelperToTheFirstRunThatWaitsForOne) {
    uninstaller(18, "first");
    uninstaller(19, kNotAuthorized);
    uninstaller(20, "third");
    uninstaller(20, kFinished);
    uninstaller(21, "fourth");
    uninstaller(21, kFailed);
    helper(30, kStep1);
    helper(31, kStep1);
    helper(32, kStep1);
    const std::vector<LogRun> runs = finish();
    ASSERT_EQ(runs.size(), 5U);
    EXPECT_EQ(runs[0].helper, 30);
    EXPECT_EQ(runs[1].helper, std::nullopt);
    EXPECT_EQ(runs[2].helper, std::nullopt);
    EXPECT_EQ(runs[3].helper, 31);
    EXPECT_EQ(runs[4].helper, 32);
    EXPECT_EQ(runs[4].uninstaller, std::nullopt);
    EXPECT_EQ(runs[4].number, 5U);
}

TEST_F(Analyzer, TakesAProcessThatGoesOnAfterItsLastLineForAnotherRun) {
    uninstaller(18, "first");
    uninstaller(18, kFinished);
    uninstaller(18, "second");
    const std::vector<LogRun> runs = finish();
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].words, Words{"first"});
    EXPECT_EQ(runs[1].words, Words{"second"});
    EXPECT_EQ(runs[1].began, "at 3");
    EXPECT_EQ(runs[1].number, 2U);
}

TEST_F(Analyzer, TakesALineOfAnEarlierStepForAnotherList) {
    helper(20, kStep31);
    helper(20, kStep1);
    helper(20, kStep31);
    const std::vector<LogRun> runs = finish();
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].reached, 31U);
    EXPECT_EQ(runs[0].ended, "at 1");
    EXPECT_EQ(runs[0].steps[0].outcome, StepOutcome::unknown);
    EXPECT_EQ(runs[0].steps[31].outcome, StepOutcome::notReached);
    EXPECT_EQ(runs[1].reached, 31U);
    EXPECT_EQ(runs[1].ended, "at 3");
}

TEST_F(Analyzer, GivesAHelpersWordsToItsLastRun) {
    helper(20, kStep31);
    helper(20, kStep1);
    helper(20, "words");
    const std::vector<LogRun> runs = finish();
    EXPECT_EQ(runs.at(0).words, Words{});
    EXPECT_EQ(runs.at(1).words, Words{"words"});
}

TEST_F(Analyzer, KeepsTheLastHundredRuns) {
    for (int pid = 1; pid <= 100; ++pid) {
        uninstaller(pid, "words");
    }
    uninstaller(1, "more");
    uninstaller(101, "words");
    uninstaller(1, "again");
    const std::vector<LogRun> runs = finish();
    ASSERT_EQ(runs.size(), 100U);
    EXPECT_EQ(runs.front().number, 3U);
    EXPECT_EQ(runs.front().uninstaller, 3);
    EXPECT_EQ(runs.back().number, 102U);
    EXPECT_EQ(runs.back().uninstaller, 1);
    EXPECT_EQ(runs.back().words, Words{"again"});
}

TEST_F(Analyzer, StandsBeforeTheStepThatWroteLast) {
    EXPECT_EQ(standing(), std::nullopt);
    uninstaller(18, "words");
    EXPECT_EQ(standing(), std::nullopt);
    helper(20, kStep1);
    ASSERT_TRUE(standing());
    EXPECT_EQ(standing()->run, 1U);
    EXPECT_EQ(standing()->settled, 0U);
    helper(20, kStep31);
    uninstaller(19, "a run without a helper");
    EXPECT_EQ(standing()->run, 1U);
    EXPECT_EQ(standing()->settled, 30U);
    EXPECT_EQ(standing()->steps.at(30).outcome, StepOutcome::done);
    EXPECT_EQ(standing()->steps.at(31).outcome, StepOutcome::notReached);
    uninstaller(18, kFinished);
    EXPECT_EQ(standing()->settled, 75U);
    EXPECT_EQ(standing()->steps.at(31).outcome, StepOutcome::unknown);
    helper(21, kStep1);
    EXPECT_EQ(standing()->run, 2U);
}

}  // namespace

}  // namespace InspectUnitTests
