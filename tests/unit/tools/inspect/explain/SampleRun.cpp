#include "SampleRun.h"

namespace InspectUnitTests {

using Inspect::StepOutcome;
using Inspect::StepReport;

StepReport stepWith(std::size_t number, StepOutcome outcome, const std::string& description) {
    StepReport step;
    step.number = number;
    step.className = "RemoveCommand";
    step.description = description;
    step.outcome = outcome;
    return step;
}

LogRun sampleRun() {
    LogRun run;
    run.number = 3;
    run.ending = Inspect::RunEnding::timedOut;
    run.began = "10:00:00";
    run.ended = "10:00:12";
    run.beganSeconds = 100;
    run.endedSeconds = 112.5;
    run.uninstaller = 18;
    run.helper = 20;
    run.consoleFound = true;
    run.reached = 4;
    run.words = {"some <words>", "more\x1b"};
    run.steps = {stepWith(1, StepOutcome::done, "Unloading daemon \"a\"..."),
                 stepWith(2, StepOutcome::notThere, "Unloading daemon b..."),
                 stepWith(3, StepOutcome::failed, "Deleting a & b..."),
                 stepWith(4, StepOutcome::unknown, "Closing c..."),
                 stepWith(15, StepOutcome::notReached, "Deleting d...")};
    run.steps[0].details = {{StepOutcome::done, "system/a", "", ""}};
    run.steps[0].first = 101;
    run.steps[0].last = 102;
    run.steps[0].pauses = true;
    run.steps[2].details = {{StepOutcome::notThere, "/a", "No such file", ""},
                            {StepOutcome::failed, "/b\x1b", "Not <permitted>", "Look at b."}};
    run.steps[2].detailsLeftOut = 7;
    run.steps[2].first = 107;
    run.steps[2].last = 112.5;
    return run;
}

}  // namespace InspectUnitTests
