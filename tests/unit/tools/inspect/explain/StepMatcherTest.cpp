#include "inspect/explain/StepMatcher.h"

#include <gtest/gtest.h>

#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using Inspect::LogEntry;
using Inspect::StepMatcher;
using Inspect::StepOutcome;
using Inspect::StepReport;
using TestSupport::installerLine;

const std::string kUnloadFailure = installerLine("Kext FileAccessFilter.kext unload failed. Return code: ");
const std::string kNotLoaded = kUnloadFailure + "-23ff7ffa";
const std::string kConsoleRemoved = installerLine("Removed at /Applications/Sentrel.app");

/// Steps are named by their numbers: 17 and 18 unload extensions, 19 to 30 close applications, 31 removes the
/// console.
class Matcher : public testing::Test {
  protected:
    bool add(const std::string& text, std::optional<double> seconds = std::nullopt) {
        LogEntry entry;
        entry.text = text;
        entry.seconds = seconds;
        return matcher.add(entry);
    }
    [[nodiscard]] StepReport step(std::size_t number, bool wentThrough = true) const {
        return matcher.reports(wentThrough).at(number - 1);
    }
    [[nodiscard]] StepOutcome outcome(std::size_t number, bool wentThrough = true) const {
        return step(number, wentThrough).outcome;
    }

    TestSupport::FakeMac mac;
    StepMatcher matcher;
};

TEST_F(Matcher, BeginsBeforeTheFirstStep) {
    EXPECT_EQ(matcher.reached(), 0U);
    EXPECT_FALSE(matcher.isFinished());
    const auto reports = matcher.reports(false);
    ASSERT_EQ(reports.size(), 75U);
    for (std::size_t index = 0; index < reports.size(); ++index) {
        EXPECT_EQ(reports[index].number, index + 1);
        EXPECT_EQ(reports[index].outcome, StepOutcome::notReached);
        EXPECT_FALSE(reports[index].pauses);
        EXPECT_EQ(reports[index].detailsLeftOut, 0U);
    }
    EXPECT_EQ(reports[0].className, "StopLaunchdJobCommand");
    EXPECT_EQ(reports[0].description, "Unloading daemon com.norvik.containmentd...");
}

TEST_F(Matcher, RemembersTheTimesOfAStep) {
    EXPECT_TRUE(add(installerLine("Kill result for pid 77: 0"), 5));
    EXPECT_TRUE(add(installerLine("Kill result for pid 78: 0"), 6));
    EXPECT_TRUE(add(installerLine("Kill result for pid 79: 0"), 8));
    EXPECT_EQ(step(19).first, 5);
    EXPECT_EQ(step(19).last, 8);
    EXPECT_EQ(step(19).details.size(), 3U);
    EXPECT_EQ(step(20).first, std::nullopt);
    EXPECT_EQ(matcher.reached(), 19U);
}

TEST_F(Matcher, GoesForwardOnly) {
    EXPECT_TRUE(add(kConsoleRemoved));
    EXPECT_EQ(matcher.reached(), 31U);
    EXPECT_FALSE(add(installerLine("Kill result for pid 77: 0")));
    EXPECT_FALSE(add("no line of any step"));
    EXPECT_EQ(matcher.reached(), 31U);
    // Further lines of the same step.
    EXPECT_TRUE(add(
        installerLine("Removed at /Library/Application Support/NORVIK/SNT/Repair/Applications/Sentrel.app")));
    EXPECT_EQ(matcher.reached(), 31U);
    EXPECT_FALSE(add(kConsoleRemoved));
}

TEST_F(Matcher, ToldThatTheHelperWentThroughTakesSilenceForItsMeaning) {
    EXPECT_TRUE(add(kConsoleRemoved));
    EXPECT_EQ(outcome(30, false), StepOutcome::notThere);
    EXPECT_EQ(outcome(31, false), StepOutcome::done);
    EXPECT_EQ(outcome(32, false), StepOutcome::notReached);
    EXPECT_EQ(outcome(32, true), StepOutcome::unknown);
    EXPECT_EQ(outcome(17, false), StepOutcome::done);
}

TEST_F(Matcher, GivesALoneFailureOfAMissingExtensionToTheSecond) {
    EXPECT_TRUE(add(kNotLoaded, 5));
    // As long as the second has not been reached, it may be the first's.
    EXPECT_EQ(outcome(17, false), StepOutcome::notThere);
    EXPECT_EQ(outcome(18, false), StepOutcome::notReached);
    const StepReport first = step(17);
    EXPECT_EQ(first.outcome, StepOutcome::done);
    EXPECT_TRUE(first.details.empty());
    EXPECT_EQ(first.first, std::nullopt);
    EXPECT_EQ(first.last, std::nullopt);
    const StepReport second = step(18);
    EXPECT_EQ(second.outcome, StepOutcome::notThere);
    ASSERT_EQ(second.details.size(), 1U);
    EXPECT_EQ(second.details[0].subject, "FileAccessFilter.kext");
    EXPECT_EQ(second.first, 5);
    EXPECT_EQ(second.last, 5);
}

TEST_F(Matcher, LeavesOtherFailuresOfExtensionsWhereTheyAre) {
    EXPECT_TRUE(add(kUnloadFailure + "-23ff7fe8", 5));
    EXPECT_EQ(outcome(17), StepOutcome::failed);
    EXPECT_EQ(outcome(18), StepOutcome::done);
    EXPECT_TRUE(add(kNotLoaded, 6));
    EXPECT_EQ(outcome(17), StepOutcome::failed);
    EXPECT_EQ(outcome(18), StepOutcome::notThere);
    EXPECT_EQ(step(17).first, 5);
    EXPECT_EQ(step(18).first, 6);
}

TEST_F(Matcher, LeavesTwoMissingExtensionsWhereTheyAre) {
    EXPECT_TRUE(add(kNotLoaded, 5));
    EXPECT_TRUE(add(kNotLoaded, 6));
    EXPECT_EQ(step(17).first, 5);
    EXPECT_EQ(step(18).first, 6);
    EXPECT_EQ(outcome(17), StepOutcome::notThere);
    EXPECT_EQ(outcome(18), StepOutcome::notThere);
}

TEST_F(Matcher, DoesNotKnowWhichApplicationWasClosed) {
    EXPECT_TRUE(add(installerLine("Kill result for pid 77: 0")));
    EXPECT_EQ(outcome(20, false), StepOutcome::notReached);
    EXPECT_EQ(outcome(19), StepOutcome::done);
    for (std::size_t number = 20; number <= 30; ++number) {
        EXPECT_EQ(outcome(number), StepOutcome::unknown) << number;
    }
    EXPECT_EQ(outcome(18), StepOutcome::done);
}

TEST_F(Matcher, KnowsThatNoApplicationWasClosed) {
    EXPECT_TRUE(add(kConsoleRemoved));
    for (std::size_t number = 19; number <= 30; ++number) {
        EXPECT_EQ(outcome(number), StepOutcome::notThere) << number;
    }
}

TEST_F(Matcher, TellsAPause) {
    EXPECT_TRUE(add(installerLine("Output: system/com.norvik.fileaccessd = {\n}\n")));
    EXPECT_EQ(matcher.reached(), 2U);
    EXPECT_TRUE(step(2).pauses);
    EXPECT_FALSE(step(1).pauses);
}

}  // namespace
