#include "inspect/explain/Run.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "inspect/explain/Codes.h"

namespace Inspect {

namespace {

std::string counted(std::size_t number, const std::string& what) {
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

std::string helperState(const Run& run) {
    if (run.steps.empty()) {
        return "The helper wrote no line of the list.";
    }
    if (run.helperFinished) {
        return "The helper still went through the whole list.";
    }
    const std::string where =
        "step " + std::to_string(run.reached) + " of " + std::to_string(run.steps.size());
    return run.helperDied ? "The helper's process ended after " + where + '.'
                          : "The last line of the helper is of " + where + '.';
}

std::string finishedResult(const Run& run) {
    if (run.steps.empty()) {
        return "Finished. The log has no line of the helper.";
    }
    const std::size_t failed = run.count(StepOutcome::failed);
    std::string text = failed == 0 ? "Finished. " : "Finished, with something left. ";
    text += "The helper went through all " + counted(run.steps.size(), "step") + ": " +
            std::to_string(run.count(StepOutcome::done)) + " did something, " +
            std::to_string(run.count(StepOutcome::notThere)) + " found nothing to do, " +
            std::to_string(failed) + " failed";
    const std::size_t unknown = run.count(StepOutcome::unknown);
    return text + (unknown == 0 ? "." : ", " + std::to_string(unknown) + " do not show in the log.");
}

/// The code in "... error 4.)" of the line about a refused blessing.
std::optional<CodeMeaning> blessingRefusal(const Run& run) {
    for (const std::string& words : run.words) {
        const std::size_t start = words.rfind("error ");
        if (!words.starts_with("SMJobBless error: ") || start == std::string::npos) {
            continue;
        }
        int code = 0;
        const char* const digits = words.data() + start + 6;
        if (std::from_chars(digits, words.data() + words.size(), code).ec == std::errc()) {
            return blessingCode(code);
        }
    }
    return std::nullopt;
}

void addStepAdvice(const Run& run, std::vector<std::string>& advice) {
    for (const StepReport& step : run.steps) {
        for (const StepDetail& detail : step.details) {
            if (detail.outcome == StepOutcome::failed && !detail.advice.empty() &&
                std::find(advice.begin(), advice.end(), detail.advice) == advice.end()) {
                advice.push_back(detail.advice);
            }
        }
    }
}

}  // namespace

std::size_t Run::count(StepOutcome outcome) const {
    return static_cast<std::size_t>(std::count_if(
        steps.begin(), steps.end(), [outcome](const StepReport& step) { return step.outcome == outcome; }));
}

std::string_view nameOf(RunEnding ending) {
    switch (ending) {
        case RunEnding::finished:
            return "finished";
        case RunEnding::notAuthorized:
            return "not-authorized";
        case RunEnding::packageNotInstalled:
            return "package-not-installed";
        case RunEnding::nothingInstalled:
            return "nothing-installed";
        case RunEnding::newerInstalled:
            return "newer-installed";
        case RunEnding::timedOut:
            return "timed-out";
        case RunEnding::cutOff:
            break;
    }
    return "cut-off";
}

std::string_view nameOf(StepOutcome outcome) {
    switch (outcome) {
        case StepOutcome::done:
            return "done";
        case StepOutcome::notThere:
            return "not there";
        case StepOutcome::failed:
            return "failed";
        case StepOutcome::unknown:
            return "unknown";
        case StepOutcome::notReached:
            break;
    }
    return "not reached";
}

std::string resultOf(const Run& run) {
    switch (run.ending) {
        case RunEnding::finished:
            return finishedResult(run);
        case RunEnding::notAuthorized: {
            const std::optional<CodeMeaning> refusal = blessingRefusal(run);
            return refusal
                       ? "Refused: a helper could not be installed: " + std::string(refusal->meaning) + '.'
                       : "Refused: no administrator rights, or a helper could not be installed.";
        }
        case RunEnding::packageNotInstalled:
            return "Refused: the runtime support package could not be installed.";
        case RunEnding::nothingInstalled:
            return "Refused: no product was found on this Mac.";
        case RunEnding::newerInstalled:
            return "Refused: the installed version is newer than the uninstaller.";
        case RunEnding::timedOut:
            return "Timed out: no final report within 60 s. " + helperState(run);
        case RunEnding::cutOff:
            break;
    }
    return "Cut off: the log does not say how the run ended. " + helperState(run);
}

std::vector<std::string> adviceFor(const Run& run) {
    std::vector<std::string> advice;
    switch (run.ending) {
        case RunEnding::finished:
            break;
        case RunEnding::notAuthorized: {
            const std::optional<CodeMeaning> refusal = blessingRefusal(run);
            advice.emplace_back(refusal ? refusal->advice
                                        : "Run it as an administrator; with --silent, as root.");
            break;
        }
        case RunEnding::packageNotInstalled:
            advice.emplace_back("Use a whole, unmodified copy of the uninstaller and run it again.");
            break;
        case RunEnding::nothingInstalled:
            advice.emplace_back("Ask sentrel-inspect scan what is left on this Mac.");
            break;
        case RunEnding::newerInstalled:
            advice.emplace_back("Use the uninstaller that came with the installed version.");
            break;
        case RunEnding::timedOut:
        case RunEnding::cutOff:
            if (!run.helperFinished) {
                advice.emplace_back("Run the uninstaller again: every step can be repeated.");
            }
            break;
    }
    addStepAdvice(run, advice);
    return advice;
}

std::optional<std::string> durationOf(const Run& run) {
    if (!run.beganSeconds || !run.endedSeconds || *run.endedSeconds < *run.beganSeconds) {
        return std::nullopt;
    }
    constexpr long kMinute = 60;
    const long seconds = std::lround(*run.endedSeconds - *run.beganSeconds);
    const std::string rest = std::to_string(seconds % kMinute) + " s";
    return seconds < kMinute ? rest : std::to_string(seconds / kMinute) + " min " + rest;
}

}  // namespace Inspect
