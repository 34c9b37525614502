#include "inspect/explain/Run.h"

#include <gtest/gtest.h>

#include "SampleRun.h"

namespace InspectUnitTests {

namespace {

using Inspect::adviceFor;
using Inspect::durationOf;
using Inspect::resultOf;
using Inspect::RunEnding;
using Inspect::StepOutcome;
using Sentences = std::vector<std::string>;

LogRun endedAs(RunEnding ending) {
    LogRun run;
    run.ending = ending;
    return run;
}

TEST(Run, HasANameForEachEnding) {
    EXPECT_EQ(nameOf(RunEnding::finished), "finished");
    EXPECT_EQ(nameOf(RunEnding::notAuthorized), "not-authorized");
    EXPECT_EQ(nameOf(RunEnding::packageNotInstalled), "package-not-installed");
    EXPECT_EQ(nameOf(RunEnding::nothingInstalled), "nothing-installed");
    EXPECT_EQ(nameOf(RunEnding::newerInstalled), "newer-installed");
    EXPECT_EQ(nameOf(RunEnding::timedOut), "timed-out");
    EXPECT_EQ(nameOf(RunEnding::cutOff), "cut-off");
}

TEST(Run, HasANameForEachOutcomeOfAStep) {
    EXPECT_EQ(nameOf(StepOutcome::done), "done");
    EXPECT_EQ(nameOf(StepOutcome::notThere), "not there");
    EXPECT_EQ(nameOf(StepOutcome::failed), "failed");
    EXPECT_EQ(nameOf(StepOutcome::unknown), "unknown");
    EXPECT_EQ(nameOf(StepOutcome::notReached), "not reached");
}

TEST(Run, CountsTheStepsOfAnOutcome) {
    LogRun run = sampleRun();
    run.steps.push_back(stepWith(16, StepOutcome::failed, "Deleting e..."));
    EXPECT_EQ(run.count(StepOutcome::failed), 2U);
    EXPECT_EQ(run.count(StepOutcome::done), 1U);
    EXPECT_EQ(LogRun().count(StepOutcome::done), 0U);
}

TEST(Run, SaysWhatAFinishedRunDid) {
    LogRun run = sampleRun();
    run.ending = RunEnding::finished;
    EXPECT_EQ(resultOf(run),
              "Finished, with something left. The helper went through all 5 steps: 1 did something, 1 found "
              "nothing to do, 1 failed, 1 do not show in the log.");
    run.steps = {stepWith(1, StepOutcome::done, "Deleting a...")};
    EXPECT_EQ(resultOf(run),
              "Finished. The helper went through all 1 step: 1 did something, 0 found nothing to do, 0 "
              "failed.");
    run.steps.clear();
    EXPECT_EQ(resultOf(run), "Finished. The log has no line of the helper.");
}

TEST(Run, SaysWhyItWasRefused) {
    EXPECT_EQ(resultOf(endedAs(RunEnding::notAuthorized)),
              "Refused: no administrator rights, or a helper could not be installed.");
    EXPECT_EQ(resultOf(endedAs(RunEnding::packageNotInstalled)),
              "Refused: the runtime support package could not be installed.");
    EXPECT_EQ(resultOf(endedAs(RunEnding::nothingInstalled)), "Refused: no product was found on this Mac.");
    EXPECT_EQ(resultOf(endedAs(RunEnding::newerInstalled)),
              "Refused: the installed version is newer than the uninstaller.");
}

TEST(Run, SaysHowFarTheHelperCame) {
    LogRun run = sampleRun();
    EXPECT_EQ(resultOf(run),
              "Timed out: no final report within 60 s. The last line of the helper is of step 4 of 5.");
    run.helperDied = true;
    EXPECT_EQ(resultOf(run),
              "Timed out: no final report within 60 s. The helper's process ended after step 4 of 5.");
    run.helperFinished = true;
    EXPECT_EQ(resultOf(run),
              "Timed out: no final report within 60 s. The helper still went through the whole list.");
    run.steps.clear();
    EXPECT_EQ(resultOf(run), "Timed out: no final report within 60 s. The helper wrote no line of the list.");
    run.ending = RunEnding::cutOff;
    EXPECT_EQ(resultOf(run),
              "Cut off: the log does not say how the run ended. The helper wrote no line of the list.");
}

TEST(Run, TakesTheReasonOfARefusedHelperFromItsLine) {
    LogRun run = endedAs(RunEnding::notAuthorized);
    const std::string words = "SMJobBless error: It failed. (CFErrorDomainLaunchd error ";
    const std::string rights = "Refused: no administrator rights, or a helper could not be installed.";
    run.words = {"error 4", words + "9.)"};
    EXPECT_EQ(resultOf(run), "Refused: a helper could not be installed: the helper is switched off.");
    EXPECT_EQ(adviceFor(run),
              Sentences{"Allow the item in System Settings, General, Login Items, and run the uninstaller "
                        "again."});
    // The last number of the line, the first line with one.
    run.words = {words + "x.)", "SMJobBless error: error 3 error 4.)", words + "9.)"};
    EXPECT_EQ(resultOf(run), "Refused: a helper could not be installed: no authorization.");
    for (const std::string& each :
         {words + "x.)", words + "77.)", std::string("SMJobBless error: 4"), "x" + words + "9.)"}) {
        run.words = {each};
        EXPECT_EQ(resultOf(run), rights) << each;
        EXPECT_EQ(adviceFor(run), Sentences{"Run it as an administrator; with --silent, as root."}) << each;
    }
}

TEST(Run, HasAdviceForEveryEndingThatNeedsSome) {
    EXPECT_EQ(adviceFor(endedAs(RunEnding::finished)), Sentences{});
    EXPECT_EQ(adviceFor(endedAs(RunEnding::notAuthorized)),
              Sentences{"Run it as an administrator; with --silent, as root."});
    EXPECT_EQ(adviceFor(endedAs(RunEnding::packageNotInstalled)),
              Sentences{"Use a whole, unmodified copy of the uninstaller and run it again."});
    EXPECT_EQ(adviceFor(endedAs(RunEnding::nothingInstalled)),
              Sentences{"Ask sentrel-inspect scan what is left on this Mac."});
    EXPECT_EQ(adviceFor(endedAs(RunEnding::newerInstalled)),
              Sentences{"Use the uninstaller that came with the installed version."});
    for (const RunEnding ending : {RunEnding::timedOut, RunEnding::cutOff}) {
        LogRun run = endedAs(ending);
        EXPECT_EQ(adviceFor(run), Sentences{"Run the uninstaller again: every step can be repeated."});
        run.helperFinished = true;
        EXPECT_EQ(adviceFor(run), Sentences{});
    }
}

TEST(Run, AddsTheAdviceOfEachFailureOnce) {
    LogRun run = endedAs(RunEnding::finished);
    run.steps = {stepWith(1, StepOutcome::failed, "a"), stepWith(2, StepOutcome::failed, "b")};
    run.steps[0].details = {{StepOutcome::failed, "/a", "", "First."},
                            {StepOutcome::failed, "/b", "", ""},
                            {StepOutcome::notThere, "/c", "", "Not needed."}};
    run.steps[1].details = {{StepOutcome::failed, "/d", "", "Second."},
                            {StepOutcome::failed, "/e", "", "First."}};
    EXPECT_EQ(adviceFor(run), (Sentences{"First.", "Second."}));
    run.ending = RunEnding::timedOut;
    EXPECT_EQ(adviceFor(run),
              (Sentences{"Run the uninstaller again: every step can be repeated.", "First.", "Second."}));
}

TEST(Run, LastedSecondsOrMinutes) {
    const auto lasted = [](std::optional<double> began, std::optional<double> ended) {
        LogRun run;
        run.beganSeconds = began;
        run.endedSeconds = ended;
        return durationOf(run);
    };
    EXPECT_EQ(lasted(10, 10), "0 s");
    EXPECT_EQ(lasted(10, 11.4), "1 s");
    EXPECT_EQ(lasted(10, 69.4), "59 s");
    EXPECT_EQ(lasted(10, 69.5), "1 min 0 s");
    EXPECT_EQ(lasted(10, 135), "2 min 5 s");
    EXPECT_EQ(lasted(10, 9), std::nullopt);
    EXPECT_EQ(lasted(std::nullopt, 9), std::nullopt);
    EXPECT_EQ(lasted(10, std::nullopt), std::nullopt);
}

}  // namespace

}  // namespace InspectUnitTests
