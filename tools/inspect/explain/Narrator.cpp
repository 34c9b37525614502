#include "inspect/explain/Narrator.h"

#include <algorithm>
#include <array>

#include "inspect/DisplayText.h"
#include "inspect/Terminal.h"

namespace Inspect {

namespace {

/// Before each item: a line begins with it as well.
constexpr std::string_view kGap = "  ";
constexpr std::string_view kClosing = "KillProcessCommand";

/// The beginning of a step's description, and the heading over all such steps.
struct Group {
    std::string_view prefix;
    std::string_view heading;
};
constexpr std::array<Group, 11> kGroups{{{"Unloading daemon ", "Unloading daemons"},
                                         {"Unloading user agent ", "Unloading user agents"},
                                         {"Unloading KEXT ", "Unloading kernel extensions"},
                                         {"Closing user application ", "Closing applications"},
                                         {"Deleting user application ", "Deleting applications"},
                                         {"Deleting resource ", "Deleting resources"},
                                         {"Deleting KEXT ", "Deleting kernel extensions"},
                                         {"Deleting user agent ", "Deleting user agents"},
                                         {"Deleting daemon ", "Deleting daemons"},
                                         {"Deleting launchd job ", "Deleting launchd jobs"},
                                         {"Deleting ", "Deleting what remains"}}};

/// A step in two parts: its group's heading and its own name. One without a group is its own heading.
struct Title {
    std::string_view heading;
    std::string_view name;
};

Title titleOf(std::string_view description) {
    constexpr std::string_view kEnd = "...";
    if (description.ends_with(kEnd)) {
        description.remove_suffix(kEnd.size());
    }
    for (const Group& group : kGroups) {
        if (description.starts_with(group.prefix)) {
            return {group.heading, description.substr(group.prefix.size())};
        }
    }
    return {description, description};
}

std::string_view markOf(StepOutcome outcome) {
    switch (outcome) {
        case StepOutcome::done:
            return "\u2713";
        case StepOutcome::notThere:
            return "\u2013";
        case StepOutcome::failed:
            return "\u2717";
        case StepOutcome::unknown:
        case StepOutcome::notReached:
            return "?";
    }
    return "";
}

std::string colouredMark(StepOutcome outcome, bool inColour) {
    const std::string_view mark = markOf(outcome);
    switch (outcome) {
        case StepOutcome::done:
            return coloured(mark, Colour::good, inColour);
        case StepOutcome::failed:
            return coloured(mark, Colour::bad, inColour);
        case StepOutcome::notThere:
        case StepOutcome::unknown:
        case StepOutcome::notReached:
            break;
    }
    return std::string(mark);
}

bool isClosing(const StepReport& step) {
    return step.className == kClosing;
}

}  // namespace

std::string Narrator::tell(const std::vector<StepReport>& steps, std::size_t settled) {
    std::string text;
    settled = std::min(settled, steps.size());
    while (told_ < settled && steps[told_].outcome != StepOutcome::notReached) {
        if (!isClosing(steps[told_])) {
            tellStep(text, steps[told_]);
            ++told_;
            continue;
        }
        const auto first = steps.begin() + static_cast<std::ptrdiff_t>(told_);
        const auto end = std::find_if_not(first, steps.end(), isClosing);
        const auto index = static_cast<std::size_t>(end - steps.begin());
        if (index > settled) {
            break;
        }
        tellClosings(text, steps, told_, index);
        told_ = index;
    }
    return text;
}

std::string Narrator::finish() {
    std::string text = column_ > 0 ? "\n" : "";
    column_ = 0;
    return text;
}

void Narrator::tellStep(std::string& text, const StepReport& step) {
    const Title title = titleOf(step.description);
    beginGroup(text, title.heading);
    if (step.outcome == StepOutcome::failed) {
        text += finish();
    }
    addItem(text, step.outcome, shown(title.name));
    if (step.outcome == StepOutcome::failed) {
        addFailures(text, step);
    }
}

// The log does not say which step ended a process, so all closings are shown together.
void Narrator::tellClosings(std::string& text, const std::vector<StepReport>& steps, std::size_t first,
                            std::size_t end) {
    std::size_t ended = 0;
    beginGroup(text, titleOf(steps[first].description).heading);
    for (std::size_t i = first; i < end; ++i) {
        const auto& details = steps[i].details;
        ended += static_cast<std::size_t>(
            std::count_if(details.begin(), details.end(),
                          [](const StepDetail& detail) { return detail.outcome == StepOutcome::done; }));
    }
    if (ended > 0) {
        addItem(text, StepOutcome::done, std::to_string(ended) + (ended == 1 ? " process" : " processes"));
    } else {
        addItem(text, StepOutcome::notThere, "none was running");
    }
    for (std::size_t i = first; i < end; ++i) {
        if (steps[i].outcome == StepOutcome::failed) {
            addFailures(text, steps[i]);
        }
    }
}

void Narrator::beginGroup(std::string& text, std::string_view heading) {
    if (heading != heading_) {
        heading_ = heading;
        text += finish();
        appendLine(text, heading_);
    }
}

void Narrator::addItem(std::string& text, StepOutcome outcome, std::string_view name) {
    const std::size_t columns = 2 + columnsOf(name);
    if (column_ + kGap.size() + columns > width_) {
        text += finish();
    }
    text += kGap;
    column_ += kGap.size() + columns;
    text += colouredMark(outcome, inColour_) + ' ';
    text += name;
}

void Narrator::addFailures(std::string& text, const StepReport& step) {
    text += finish();
    for (const StepDetail& detail : step.details) {
        if (detail.outcome == StepOutcome::failed) {
            const std::string reason = detail.reason.empty() ? "" : ": " + detail.reason;
            appendFolded(text, shown(std::string_view(detail.subject + reason)), 2 * kGap.size(), width_);
        }
    }
}

}  // namespace Inspect
