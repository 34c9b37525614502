#include "PlainFacts.h"

#include <initializer_list>
#include <string_view>

#include "DisplayText.h"
#include "ItemText.h"
#include "Look.h"

namespace Inspect {

namespace {

/// Each word escaped as for a terminal; "-" for an empty one, because a shell runs tabs together.
void addFact(std::string& text, std::initializer_list<std::string_view> words) {
    bool isFirst = true;
    for (const std::string_view word : words) {
        text += (isFirst ? "" : "\t") + (word.empty() ? "-" : shown(word));
        isFirst = false;
    }
    text += '\n';
}

void addFindings(std::string& text, const Inventory::Inventory& found) {
    for (const auto& place : found.places) {
        addFact(text, {"item", nameOf(place.kind), found.root + place.paths.front()});
    }
    for (const auto& job : found.jobs) {
        addFact(text, {"job", job.target(), job.pid ? std::to_string(*job.pid) : std::string()});
    }
    for (const auto& process : found.processes) {
        addFact(text, {"process", process.path, std::to_string(process.pid)});
    }
    for (const auto& identifier : found.extensions) {
        addFact(text, {"extension", identifier});
    }
}

}  // namespace

std::string plainFacts(const Scan& scan) {
    const Inventory::Inventory& found = scan.inventory;
    const Inventory::Verdict verdict = scan.verdict();
    std::string text;
    addFact(text, {"verdict", nameOf(verdict)});
    addFact(text, {"uninstaller", nameOf(Inventory::uninstallerAnswer(found, scan.uninstaller))});
    if (found.version) {
        addFact(text, {"version", found.version->shortVersion, found.version->build});
    }
    addFact(text, {"helper", Inventory::helperRuns(found) ? "running" : "idle"});
    addFindings(text, found);
    for (const auto& leftover : Inventory::leftoversOf(found, verdict)) {
        addFact(text, {"leftover", leftover.kind, leftover.target});
    }
    for (const auto& each : found.blind) {
        addFact(text, {"could-not-look", each});
    }
    return text;
}

}  // namespace Inspect
