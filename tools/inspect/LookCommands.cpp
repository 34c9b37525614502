// The commands that look at a Mac.

#include <unistd.h>

#include <charconv>

#include "Commands.h"
#include "DisplayText.h"
#include "Find.h"
#include "MacView.h"
#include "NorvikCommon/PMProcessUtil.h"
#include "Output.h"
#include "PlainFacts.h"
#include "PlanReport.h"
#include "Platform/SystemPorts.h"
#include "ScanReport.h"
#include "Terminal.h"

namespace Inspect {

namespace {

std::optional<std::uint32_t> secondsOf(const std::string& text) {
    constexpr std::uint32_t kMost = 86400;
    std::uint32_t seconds = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, seconds);
    return parsed.ec == std::errc() && parsed.ptr == end && seconds <= kMost ? std::optional(seconds)
                                                                             : std::nullopt;
}

/// Looks until the uninstaller's helpers no longer run, `seconds` at most.
Inventory::Inventory lookAfterWaiting(const MacView& view, std::uint32_t seconds) {
    Inventory::Inventory inventory = view.look();
    Progress progress;
    for (std::uint32_t waited = 0; waited < seconds && Inventory::helperRuns(inventory); ++waited) {
        progress.show("Waiting for the helper to finish (" + std::to_string(waited) + " s)...");
        Platform::SystemPorts::current().clock->sleep(1);
        inventory = view.look();
    }
    return inventory;
}

/// All processes but this one.
std::vector<NorvikCommon::PMProcess> allProcesses() {
    std::vector<NorvikCommon::PMProcess> processes;
    for (const std::int32_t pid :
         NorvikCommon::PMProcessUtil::shared().collectPidsForUser(NorvikCommon::kAllUsersId)) {
        const auto process = NorvikCommon::PMProcess::processWithPid(pid);
        if (process && pid != ::getpid()) {
            processes.push_back(*process);
        }
    }
    return processes;
}

/// The plan, with a progress line that disappears once it is made.
Plan planOf(const MacView& view) {
    Progress progress;
    return makePlan({view.look(),
                     view.root().empty() ? allProcesses() : std::vector<NorvikCommon::PMProcess>(),
                     view.files(), [&progress](const Platform::TreeSize& soFar) {
                         progress.show("Counting files: " + std::to_string(soFar.files));
                     }});
}

}  // namespace

int runScan(const Arguments& arguments) {
    std::string why;
    const auto view = MacView::make(arguments.value("--root"), why);
    if (!view) {
        return fail(kRefused, why);
    }
    Scan scan{view->look(), ownVersion(), {}};
    const int status = exitStatusOf(scan.verdict());
    if (arguments.has("--removal-lines")) {
        return print(removalLines(scan), status);
    }
    if (arguments.has("--plain")) {
        return print(plainFacts(scan), status);
    }
    scan.sizes = view->sizesOf(scan.inventory);
    return print(
        arguments.has("--json") ? jsonText(scanJson(scan)) : scanText(scan, usesColour(), reportWidth()),
        status);
}

int runVerify(const Arguments& arguments) {
    const auto seconds = secondsOf(arguments.value("--wait").value_or("0"));
    if (!seconds) {
        return fail(kMisuse, "--wait: \"" + shown(std::string_view(*arguments.value("--wait"))) +
                                 "\" is not a number of seconds up to 86400");
    }
    std::string why;
    const auto view = MacView::make(arguments.value("--root"), why);
    if (!view) {
        return fail(kRefused, why);
    }
    const Scan scan{lookAfterWaiting(*view, *seconds), ownVersion(), {}};
    return print(arguments.has("--json") ? jsonText(scanJson(scan)) : verifyText(scan),
                 exitStatusOf(scan.verdict()));
}

int runPlan(const Arguments& arguments) {
    std::string why;
    const auto view = MacView::make(arguments.value("--root"), why);
    if (!view) {
        return fail(kRefused, why);
    }
    const Plan plan = planOf(*view);
    const bool all = arguments.has("--all");
    return print(arguments.has("--json") ? jsonText(planJson(plan, all)) : planText(plan, all, reportWidth()),
                 plan.isComplete() ? kDone : kRefused);
}

int runFind(const Arguments& arguments) {
    const FindResult result = find(arguments.argument);
    const bool json = arguments.has("--json");
    if (result.isEmpty() && !json) {
        return fail(kRefused,
                    "nothing of the product goes by \"" + shown(std::string_view(arguments.argument)) + "\"");
    }
    return print(json ? jsonText(findJson(result)) : findText(result), result.isEmpty() ? kRefused : kDone);
}

}  // namespace Inspect
