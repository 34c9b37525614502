#include "inspect/explain/RunReport.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "inspect/DisplayText.h"

namespace Inspect {

namespace {

constexpr std::size_t kLabelWidth = 8;
constexpr std::size_t kOutcomeWidth = 11;
// Where a step's description begins.
constexpr std::size_t kDetailIndent = 19;

/// Appends `text` in lines of at most `width` columns, broken between words; every line after the first is
/// indented by as much as `line` takes already.
void appendWrapped(std::string& output, std::string line, std::string_view text, std::size_t width) {
    const std::size_t indent = columnsOf(line);
    std::size_t used = indent;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        const std::size_t columns = columnsOf(word);
        if (used > indent && used + 1 + columns > width) {
            appendLine(output, line);
            line.assign(indent, ' ');
            used = indent;
        } else if (used > indent) {
            line += ' ';
            ++used;
        }
        line += word;
        used += columns;
        text.remove_prefix(word.size());
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    }
    appendLine(output, line);
}

void appendField(std::string& output, std::string_view label, std::string_view text, std::size_t width) {
    std::string line = "  ";
    appendCell(line, label, kLabelWidth);
    appendWrapped(output, std::move(line), text, width);
}

std::string processes(const Run& run) {
    std::string text;
    if (run.uninstaller) {
        text = "Uninstall Sentrel, process " + std::to_string(*run.uninstaller);
    }
    if (run.helper) {
        text += (text.empty() ? "" : "; ") + std::string("com.norvik.InstallerHelper, process ") +
                std::to_string(*run.helper);
    }
    return text;
}

std::string detailText(const StepDetail& detail) {
    std::string text(nameOf(detail.outcome));
    text += ": " + shown(std::string_view(detail.subject));
    if (!detail.reason.empty()) {
        text += ": " + shown(std::string_view(detail.reason));
    }
    return text;
}

void appendStep(std::string& output, const StepReport& step, bool everything, std::size_t width) {
    std::string line = "  ";
    const std::string number = std::to_string(step.number);
    line.append(number.size() < 2 ? 1 : 0, ' ');
    appendCell(line, number, 0);
    appendCell(line, nameOf(step.outcome), kOutcomeWidth);
    const std::string pause = step.pauses ? "  (then a pause of 5 s)" : "";
    appendLine(output, line + shown(std::string_view(step.description)) + pause);
    for (const StepDetail& detail : step.details) {
        if (everything || detail.outcome == StepOutcome::failed) {
            appendWrapped(output, std::string(kDetailIndent, ' '), detailText(detail), width);
        }
    }
    if (step.detailsLeftOut > 0) {
        appendLine(output, std::string(kDetailIndent, ' ') + leftOutText(step));
    }
}

void appendSteps(std::string& output, const Run& run, bool allSteps, std::size_t width) {
    bool any = false;
    for (const StepReport& step : run.steps) {
        if (allSteps || step.outcome == StepOutcome::failed) {
            output += any ? "" : "\n";
            any = true;
            appendStep(output, step, allSteps, width);
        }
    }
}

void appendRun(std::string& output, const Run& run, bool allSteps, std::size_t width) {
    const std::optional<std::string> duration = durationOf(run);
    appendField(output, "Began", shown(std::string_view(run.began)), width);
    appendField(output, "Ended",
                shown(std::string_view(run.ended)) + (duration ? ", after " + *duration : ""), width);
    appendField(output, "Who", processes(run), width);
    appendField(output, "Result", resultOf(run), width);
    for (const std::string& advice : adviceFor(run)) {
        appendField(output, "To do", advice, width);
    }
    for (const std::string& words : run.words) {
        appendField(output, "Log", shown(std::string_view(words)), width);
    }
    appendSteps(output, run, allSteps, width);
}

template <class Value>
Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json stepJson(const StepReport& step) {
    Json details = Json::array();
    for (const StepDetail& detail : step.details) {
        details.push_back({{"outcome", nameOf(detail.outcome)},
                           {"subject", detail.subject},
                           {"reason", detail.reason},
                           {"advice", detail.advice}});
    }
    return {{"number", step.number},
            {"class", step.className},
            {"description", step.description},
            {"outcome", nameOf(step.outcome)},
            {"pauses", step.pauses},
            {"details", std::move(details)},
            {"detailsLeftOut", step.detailsLeftOut}};
}

Json oneRunJson(const Run& run) {
    Json steps = Json::array();
    for (const StepReport& step : run.steps) {
        steps.push_back(stepJson(step));
    }
    Json seconds = nullptr;
    if (run.beganSeconds && run.endedSeconds) {
        seconds = *run.endedSeconds - *run.beganSeconds;
    }
    return {{"number", run.number},
            {"ending", nameOf(run.ending)},
            {"result", resultOf(run)},
            {"advice", adviceFor(run)},
            {"began", run.began},
            {"ended", run.ended},
            {"seconds", std::move(seconds)},
            {"uninstaller", orNull(run.uninstaller)},
            {"helper", orNull(run.helper)},
            {"consoleFound", orNull(run.consoleFound)},
            {"reached", run.reached},
            {"helperFinished", run.helperFinished},
            {"helperDied", run.helperDied},
            {"words", run.words},
            {"steps", std::move(steps)}};
}

}  // namespace

std::string runReport(const std::vector<Run>& runs, bool allSteps, std::size_t width) {
    if (runs.empty()) {
        return "No run of the uninstaller is in this log.\n";
    }
    std::string output;
    for (const Run& run : runs) {
        output += (output.empty() ? "Run " : "\nRun ") + std::to_string(run.number) + " of " +
                  std::to_string(runs.back().number) + '\n';
        appendRun(output, run, allSteps, width);
    }
    return output;
}

std::string leftOutText(const StepReport& step) {
    return std::to_string(step.detailsLeftOut) + " more are left out";
}

Json runJson(const std::vector<Run>& runs) {
    Json list = Json::array();
    for (const Run& run : runs) {
        list.push_back(oneRunJson(run));
    }
    return {{"formatVersion", 1}, {"runs", std::move(list)}};
}

}  // namespace Inspect
