#include "inspect/explain/Narrator.h"

#include <gtest/gtest.h>

#include "SampleRun.h"

namespace InspectUnitTests {

namespace {

using Inspect::Narrator;
using Inspect::StepOutcome;
using Inspect::StepReport;
using Steps = std::vector<StepReport>;

constexpr std::size_t kManyColumns = 100;

/// Steps with these descriptions, all done.
Steps doneSteps(const std::vector<std::string>& descriptions) {
    Steps steps;
    for (const std::string& description : descriptions) {
        steps.push_back(stepWith(steps.size() + 1, StepOutcome::done, description));
    }
    return steps;
}

/// The whole text about steps that are all over.
std::string told(const Steps& steps, std::size_t width = kManyColumns, bool inColour = false) {
    Narrator narrator(width, inColour);
    const std::string text = narrator.tell(steps, steps.size());
    return text + narrator.finish();
}

StepReport closing(const std::vector<StepOutcome>& outcomes) {
    StepReport step = stepWith(1, StepOutcome::notThere, "Closing user application a...");
    step.className = "KillProcessCommand";
    for (const StepOutcome outcome : outcomes) {
        step.details.push_back({outcome, "process 7", outcome == StepOutcome::failed ? "why" : "", ""});
        step.outcome = outcome;
    }
    return step;
}

TEST(Narrator, PutsStepsOfAKindUnderAHeading) {
    EXPECT_EQ(
        told(doneSteps({"Unloading daemon a...", "Unloading daemon b...", "Unloading user agent c...",
                        "Unloading KEXT d...", "Closing user application e...",
                        "Deleting user application f...", "Deleting resource g...", "Deleting KEXT h...",
                        "Deleting user agent i...", "Deleting daemon j...", "Deleting launchd job k...",
                        "Deleting all the rest...", "Something else", "Deleting it..now.."})),
        "Unloading daemons\n"
        "  ✓ a  ✓ b\n"
        "Unloading user agents\n"
        "  ✓ c\n"
        "Unloading kernel extensions\n"
        "  ✓ d\n"
        "Closing applications\n"
        "  ✓ e\n"
        "Deleting applications\n"
        "  ✓ f\n"
        "Deleting resources\n"
        "  ✓ g\n"
        "Deleting kernel extensions\n"
        "  ✓ h\n"
        "Deleting user agents\n"
        "  ✓ i\n"
        "Deleting daemons\n"
        "  ✓ j\n"
        "Deleting launchd jobs\n"
        "  ✓ k\n"
        "Deleting what remains\n"
        "  ✓ all the rest\n"
        "Something else\n"
        "  ✓ Something else\n"
        "Deleting what remains\n"
        "  ✓ it..now..\n");
}

TEST(Narrator, MarksEachOutcome) {
    Steps steps{stepWith(1, StepOutcome::done, "Deleting a..."),
                stepWith(2, StepOutcome::notThere, "Deleting b..."),
                stepWith(3, StepOutcome::unknown, "Deleting c\x1b..."),
                stepWith(4, StepOutcome::failed, "Deleting d..."),
                stepWith(5, StepOutcome::done, "Deleting e..."),
                stepWith(6, StepOutcome::notReached, "Deleting f...")};
    steps[3].details = {{StepOutcome::done, "/no", "", ""},
                        {StepOutcome::failed, "/d\x1b", "Not permitted", "Advice."},
                        {StepOutcome::failed, "/e", "", ""}};
    EXPECT_EQ(told(steps),
              "Deleting what remains\n"
              "  ✓ a  – b  ? c\\x1b\n"
              "  ✗ d\n"
              "    /d\\x1b: Not permitted\n"
              "    /e\n"
              "  ✓ e\n");
    EXPECT_EQ(told(steps, kManyColumns, true),
              "Deleting what remains\n"
              "  \x1b[32m✓\x1b[0m a  – b  ? c\\x1b\n"
              "  \x1b[31m✗\x1b[0m d\n"
              "    /d\\x1b: Not permitted\n"
              "    /e\n"
              "  \x1b[32m✓\x1b[0m e\n");
}

TEST(Narrator, KeepsWithinTheWidth) {
    const Steps steps = doneSteps({"Deleting aaaa...", "Deleting bb...", "Deleting éé...", "Deleting d..."});
    EXPECT_EQ(told(steps, 25), "Deleting what remains\n  ✓ aaaa  ✓ bb  ✓ éé  ✓ d\n");
    EXPECT_EQ(told(steps, 24), "Deleting what remains\n  ✓ aaaa  ✓ bb  ✓ éé\n  ✓ d\n");
    EXPECT_EQ(told(steps, 20), "Deleting what remains\n  ✓ aaaa  ✓ bb  ✓ éé\n  ✓ d\n");
    EXPECT_EQ(told(steps, 19), "Deleting what remains\n  ✓ aaaa  ✓ bb\n  ✓ éé  ✓ d\n");
    EXPECT_EQ(told(steps, 3), "Deleting what remains\n  ✓ aaaa\n  ✓ bb\n  ✓ éé\n  ✓ d\n");
    Steps failed{stepWith(1, StepOutcome::failed, "Deleting a...")};
    failed[0].details = {{StepOutcome::failed, "/one/two", "some words", ""}};
    EXPECT_EQ(told(failed, 20),
              "Deleting what remains\n"
              "  ✗ a\n"
              "    /one/two: some\n"
              "        words\n");
}

TEST(Narrator, GoesOnWhereItStopped) {
    const Steps steps =
        doneSteps({"Deleting a...", "Deleting b...", "Deleting KEXT c...", "Deleting KEXT d..."});
    Narrator narrator(kManyColumns, false);
    EXPECT_EQ(narrator.tell(steps, 0), "");
    EXPECT_EQ(narrator.tell(steps, 1), "Deleting what remains\n  ✓ a");
    EXPECT_EQ(narrator.tell(steps, 1), "");
    EXPECT_EQ(narrator.tell(steps, 3), "  ✓ b\nDeleting kernel extensions\n  ✓ c");
    EXPECT_EQ(narrator.finish(), "\n");
    EXPECT_EQ(narrator.finish(), "");
    EXPECT_EQ(narrator.tell(steps, 9), "  ✓ d");
    EXPECT_EQ(narrator.tell(steps, 9), "");
}

TEST(Narrator, EndsBeforeAStepThatWasNotReached) {
    Steps steps = doneSteps({"Deleting a...", "Deleting b...", "Deleting c..."});
    steps[1].outcome = StepOutcome::notReached;
    EXPECT_EQ(told(steps), "Deleting what remains\n  ✓ a\n");
}

TEST(Narrator, TellsAllClosingsTogether) {
    const StepReport other = stepWith(9, StepOutcome::done, "Deleting it...");
    const std::string heading = "Closing applications\n";
    const std::string rest = "Deleting what remains\n  ✓ it\n";
    EXPECT_EQ(told({closing({}), closing({}), other}), heading + "  – none was running\n" + rest);
    EXPECT_EQ(told({closing({StepOutcome::done}), closing({}), other}), heading + "  ✓ 1 process\n" + rest);
    EXPECT_EQ(told({closing({StepOutcome::done}), closing({StepOutcome::done, StepOutcome::done}), other}),
              heading + "  ✓ 3 processes\n" + rest);
    EXPECT_EQ(
        told({closing({StepOutcome::failed}), closing({StepOutcome::done, StepOutcome::failed}), other}),
        heading + "  ✓ 1 process\n    process 7: why\n    process 7: why\n" + rest);
    EXPECT_EQ(told({closing({StepOutcome::failed})}), heading + "  – none was running\n    process 7: why\n");
}

TEST(Narrator, WaitsForTheLastOfTheClosings) {
    const Steps steps{stepWith(1, StepOutcome::done, "Deleting a..."), closing({StepOutcome::done}),
                      closing({}), stepWith(4, StepOutcome::done, "Deleting b...")};
    Narrator narrator(kManyColumns, false);
    EXPECT_EQ(narrator.tell(steps, 2), "Deleting what remains\n  ✓ a");
    EXPECT_EQ(narrator.tell(steps, 3), "\nClosing applications\n  ✓ 1 process");
    EXPECT_EQ(narrator.tell(steps, 4), "\nDeleting what remains\n  ✓ b");
}

}  // namespace

}  // namespace InspectUnitTests
