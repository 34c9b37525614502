#include "inspect/explain/StepMatcher.h"

#include <algorithm>
#include <utility>

#include "InstallCommon/CommandLists.h"
#include "inspect/CommandKinds.h"

namespace Inspect {

StepMatcher::StepMatcher() {
    for (const auto& command : InstallCommon::CommandLists::uninstallation()) {
        StepReport report;
        report.number = steps_.size() + 1;
        report.className = kindOf(*command).className;
        report.description = command->commandDescription();
        steps_.push_back({std::move(report), makeStep(*command)});
    }
}

bool StepMatcher::add(const LogEntry& entry) {
    for (std::size_t i = reached_ == 0 ? 0 : reached_ - 1; i < steps_.size(); ++i) {
        if (steps_[i].step != nullptr && steps_[i].step->take(entry.text)) {
            StepReport& report = steps_[i].report;
            report.first = report.first ? report.first : entry.seconds;
            report.last = entry.seconds;
            reached_ = i + 1;
            return true;
        }
    }
    return false;
}

bool StepMatcher::isFinished() const {
    return reached_ == steps_.size() && steps_.back().step->isComplete();
}

std::vector<StepReport> StepMatcher::reports(bool wentThrough) const {
    std::vector<StepReport> reports;
    for (std::size_t i = 0; i < steps_.size(); ++i) {
        const Step& step = *steps_[i].step;
        StepReport report = steps_[i].report;
        report.details = step.details();
        report.detailsLeftOut = step.leftOut();
        report.pauses = step.pauses();
        if (!report.details.empty()) {
            report.outcome = combinedOutcome(report.details);
        } else {
            report.outcome = wentThrough || i < reached_ ? step.outcomeOfSilence() : StepOutcome::notReached;
        }
        reports.push_back(std::move(report));
    }
    moveLoneUnloadFailure(reports);
    blurClosings(reports);
    return reports;
}

// Both kernel extensions have one name and one identifier. If one unloading failed because nothing was
// loaded, it is the second: the first, silent one has succeeded.
void StepMatcher::moveLoneUnloadFailure(std::vector<StepReport>& reports) {
    const auto first = std::find_if(reports.begin(), reports.end(), [](const StepReport& report) {
        return report.className == "UnloadKextCommand";
    });
    if (first == reports.end() || first + 1 == reports.end() || (first + 1)->className != first->className) {
        return;
    }
    StepReport& second = *(first + 1);
    if (first->outcome == StepOutcome::notThere && second.details.empty() &&
        second.outcome == StepOutcome::done) {
        std::swap(first->details, second.details);
        std::swap(first->first, second.first);
        std::swap(first->last, second.last);
        std::swap(first->outcome, second.outcome);
    }
}

// A line about an ended process does not say which step it belongs to.
void StepMatcher::blurClosings(std::vector<StepReport>& reports) {
    const auto isClosing = [](const StepReport& report) { return report.className == "KillProcessCommand"; };
    const bool anything = std::any_of(reports.begin(), reports.end(), [&](const StepReport& report) {
        return isClosing(report) && !report.details.empty();
    });
    for (StepReport& report : reports) {
        if (anything && isClosing(report) && report.details.empty() &&
            report.outcome == StepOutcome::notThere) {
            report.outcome = StepOutcome::unknown;
        }
    }
}

}  // namespace Inspect
