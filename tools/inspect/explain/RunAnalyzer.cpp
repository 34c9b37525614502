#include "inspect/explain/RunAnalyzer.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "InstallCommon/IntallHelper.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"

namespace Inspect {

namespace {

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

/// launchd's message when a job's process ends before its work is done.
bool tellsOfADeath(std::string_view text) {
    return contains(text, InstallCommon::InstallHelper::machServiceName) &&
           (contains(text, "was ended by signal") || contains(text, "Service exited") ||
            contains(text, "exited due to SIG") || contains(text, "exited with status"));
}

bool isRefusedBlessing(std::string_view text) {
    return text.starts_with("Blessing of ");
}

}  // namespace

void RunAnalyzer::add(const LogEntry& entry) {
    const auto uninstaller = NorvikCommon::ComponentPathProvider::uninstaller();
    if (entry.program == uninstaller.executable->name) {
        addFromUninstaller(entry);
    } else if (entry.program == InstallCommon::InstallHelper::machServiceName) {
        addFromHelper(entry);
    } else {
        addFromOthers(entry);
    }
}

void RunAnalyzer::addFromUninstaller(const LogEntry& entry) {
    constexpr std::string_view kFound = "[SNTM Installer] found installed version true, updatable: ";
    Open* const known = runOfUninstaller(entry.pid);
    Open& open = known != nullptr ? *known : begin(entry);
    open.run.uninstaller = entry.pid;
    touch(open, entry);
    const std::string_view text = entry.text;
    if (text.starts_with(kFound)) {
        open.run.consoleFound = text.substr(kFound.size()) == "true";
    } else if (text == "[SNTM Installer] Uninstallation finished.") {
        conclude(open, true);
    } else if (text == "[SNTM Installer] Uninstallation failed.") {
        conclude(open, false);
    } else if (text == "Helper authorization and blessing failed. Quitting...") {
        open.reason = RunEnding::notAuthorized;
    } else if (text == "Failed to install Swift runtime support. Quitting...") {
        open.reason = RunEnding::packageNotInstalled;
    } else if (text == "Antivirus cannot be uninstalled") {
        open.reason =
            open.run.consoleFound.value_or(false) ? RunEnding::newerInstalled : RunEnding::nothingInstalled;
    } else if (text != "Uninstallation finished") {
        note(open, entry);
    }
}

void RunAnalyzer::conclude(Open& open, bool finished) const {
    open.hasOutcome = true;
    open.run.ending = finished ? RunEnding::finished : open.reason.value_or(RunEnding::timedOut);
}

void RunAnalyzer::addFromHelper(const LogEntry& entry) {
    Open* open = runOfHelper(entry.pid);
    if (open != nullptr && open->steps->add(entry)) {
        touch(*open, entry);
        return;
    }
    if (!fresh_.add(entry)) {
        open = open != nullptr ? open : runWithoutHelper();
        if (open != nullptr) {
            note(*open, entry);
        }
        return;
    }
    open = runWithoutHelper();
    open = open != nullptr ? open : &begin(entry);
    open->steps = std::exchange(fresh_, StepMatcher());
    open->run.helper = entry.pid;
    touch(*open, entry);
}

void RunAnalyzer::addFromOthers(const LogEntry& entry) {
    if (runs_.empty()) {
        return;
    }
    Open& latest = runs_.back();
    if (entry.program == InstallCommon::SupportPrivilegedHelperClient::machServiceName ||
        isRefusedBlessing(entry.text)) {
        if (!latest.hasOutcome) {
            note(latest, entry);
        }
    } else if (tellsOfADeath(entry.text) && latest.steps && !latest.steps->isFinished()) {
        latest.run.helperDied = true;
        note(latest, entry);
    }
}

std::optional<RunAnalyzer::Standing> RunAnalyzer::standing() const {
    const auto found =
        std::find_if(runs_.rbegin(), runs_.rend(), [](const Open& open) { return open.steps.has_value(); });
    if (found == runs_.rend()) {
        return std::nullopt;
    }
    Standing standing;
    standing.run = found->run.number;
    const bool isOver = found->steps->isFinished() || found->run.ending == RunEnding::finished;
    standing.steps = found->steps->reports(isOver);
    // The current step may write more.
    standing.settled = isOver ? standing.steps.size() : found->steps->reached() - 1;
    return standing;
}

std::vector<Run> RunAnalyzer::finish() {
    std::vector<Run> runs;
    for (Open& open : runs_) {
        Run& run = open.run;
        if (open.steps) {
            run.helperFinished = open.steps->isFinished() || run.ending == RunEnding::finished;
            run.reached = open.steps->reached();
            run.steps = open.steps->reports(run.helperFinished);
        }
        // A window has no last line; neither has a log that begins later or holds the helper's lines only.
        if (!open.hasOutcome && run.helperFinished) {
            run.ending = RunEnding::finished;
        } else if (!open.hasOutcome && open.reason) {
            run.ending = *open.reason;
        }
        runs.push_back(std::move(run));
    }
    runs_.clear();
    return runs;
}

RunAnalyzer::Open& RunAnalyzer::begin(const LogEntry& entry) {
    if (runs_.size() == kMostRuns) {
        runs_.pop_front();
    }
    Run& run = runs_.emplace_back().run;
    run.number = ++begun_;
    run.began = entry.time;
    run.beganSeconds = entry.seconds;
    return runs_.back();
}

RunAnalyzer::Open* RunAnalyzer::runOfUninstaller(std::int32_t pid) {
    const auto found = std::find_if(runs_.rbegin(), runs_.rend(), [pid](const Open& open) {
        return open.run.uninstaller == pid && !open.hasOutcome;
    });
    return found == runs_.rend() ? nullptr : &*found;
}

RunAnalyzer::Open* RunAnalyzer::runOfHelper(std::int32_t pid) {
    const auto found = std::find_if(runs_.rbegin(), runs_.rend(),
                                    [pid](const Open& open) { return open.run.helper == pid; });
    return found == runs_.rend() ? nullptr : &*found;
}

RunAnalyzer::Open* RunAnalyzer::runWithoutHelper() {
    const auto found = std::find_if(runs_.begin(), runs_.end(), [](const Open& open) {
        const bool waits = !open.hasOutcome || open.run.ending == RunEnding::timedOut;
        return waits && !open.reason && !open.steps;
    });
    return found == runs_.end() ? nullptr : &*found;
}

void RunAnalyzer::note(Open& open, const LogEntry& entry) {
    if (open.run.words.size() < kMostWords) {
        open.run.words.push_back(entry.text.substr(0, kLongestWords));
    }
}

void RunAnalyzer::touch(Open& open, const LogEntry& entry) {
    open.run.ended = entry.time;
    open.run.endedSeconds = entry.seconds;
}

}  // namespace Inspect
