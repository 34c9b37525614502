#include "PlanReport.h"

#include <algorithm>

#include "DisplayText.h"
#include "ItemText.h"

namespace Inspect {

namespace {

constexpr int kPlanFormat = 1;

std::string counted(std::uint64_t count, const char* one, const char* several) {
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

std::string sizeOf(const Platform::TreeSize& size) {
    return (size.unread > 0 ? "at least " : "") + sizeText(size.bytes) + " in " +
           counted(size.files, "file", "files");
}

std::string textOf(const PlanFinding& finding) {
    switch (finding.kind) {
        case PlanFinding::Kind::job:
            return "job " + shown(std::string_view(finding.name)) +
                   (finding.pid ? ", running as process " + std::to_string(*finding.pid) : ", not running");
        case PlanFinding::Kind::extension:
            return shown(std::string_view(finding.name)) + ", loaded";
        case PlanFinding::Kind::process:
            return "process " + std::to_string(finding.pid.value_or(0)) + " of user " +
                   std::to_string(finding.uid) + ", " + shown(std::string_view(finding.name)) +
                   (finding.isOfProduct ? "" : " (not the product's)");
        case PlanFinding::Kind::item:
            return shown(std::string_view(finding.name)) +
                   (finding.goesWithStep                             ? ""
                    : finding.itemKind == Platform::ItemKind::folder ? "  (" + sizeOf(finding.size) + ")"
                    : finding.itemKind == Platform::ItemKind::file
                        ? "  (" + sizeText(finding.size.bytes) + ")"
                        : std::string("  (") + nameOf(finding.itemKind) + ")");
    }
    return {};
}

void appendStep(std::string& text, const PlanStep& step, std::size_t width) {
    constexpr std::size_t kIndent = 6;
    const std::string number = std::to_string(step.number);
    appendLine(text,
               (number.size() < 2 ? " " : "") + number + "  " + shown(std::string_view(step.description)));
    const auto append = [&text, width](const std::string& line) { appendFolded(text, line, kIndent, width); };
    for (const PlanFinding& finding : step.findings) {
        append(textOf(finding) +
               (finding.goesWithStep ? ", gone with step " + std::to_string(*finding.goesWithStep) : ""));
    }
    if (step.pauseSeconds > 0) {
        append("then a pause of " + std::to_string(step.pauseSeconds) + " s");
    }
    if (step.isUnknown) {
        append("not looked at");
    } else if (step.findings.empty()) {
        append("nothing");
    }
}

std::size_t stepsThatFind(const Plan& plan) {
    return static_cast<std::size_t>(std::count_if(
        plan.steps.begin(), plan.steps.end(), [](const PlanStep& step) { return step.findsSomething(); }));
}

Json findingJson(const PlanFinding& finding) {
    Json object = Json::object();
    switch (finding.kind) {
        case PlanFinding::Kind::job:
            object = {{"job", finding.name}, {"pid", finding.pid ? Json(*finding.pid) : Json(nullptr)}};
            break;
        case PlanFinding::Kind::extension:
            object = {{"loadedExtension", finding.name}};
            break;
        case PlanFinding::Kind::process:
            object = {{"process", finding.name},
                      {"pid", *finding.pid},
                      {"uid", finding.uid},
                      {"isOfProduct", finding.isOfProduct}};
            break;
        case PlanFinding::Kind::item:
            object = {{"item", finding.name},
                      {"kind", nameOf(finding.itemKind)},
                      {"bytes", finding.size.bytes},
                      {"files", finding.size.files},
                      {"isComplete", finding.size.unread == 0}};
            break;
    }
    object["goneWithStep"] = finding.goesWithStep ? Json(*finding.goesWithStep) : Json(nullptr);
    return object;
}

std::vector<std::string> blindOf(const Plan& plan) {
    std::vector<std::string> blind = plan.inventory.blind;
    blind.insert(blind.end(), plan.blind.begin(), plan.blind.end());
    return blind;
}

}  // namespace

std::string planText(const Plan& plan, bool all, std::size_t width) {
    std::string text;
    for (const PlanStep& step : plan.steps) {
        if (all || step.findsSomething()) {
            appendStep(text, step, width);
        }
    }
    const std::uint32_t pauses = plan.pauseSeconds();
    text += std::to_string(stepsThatFind(plan)) + " of " + std::to_string(plan.steps.size()) +
            " steps find something: " + sizeOf(plan.sum()) + ".\n";
    text += "It takes a few seconds" +
            (pauses > 0 ? ", and " + std::to_string(pauses) + " s of pauses after stopped daemons"
                        : std::string()) +
            ".\n";
    for (const std::string& each : plan.inventory.notLookedAt) {
        appendFolded(text, "Not looked at: " + shown(std::string_view(each)), 0, width);
    }
    for (const std::string& each : blindOf(plan)) {
        appendFolded(text, "Could not look: " + shown(std::string_view(each)), 0, width);
    }
    return text;
}

Json planJson(const Plan& plan, bool all) {
    Json steps = Json::array();
    for (const PlanStep& step : plan.steps) {
        if (!all && !step.findsSomething()) {
            continue;
        }
        Json findings = Json::array();
        for (const PlanFinding& finding : step.findings) {
            findings.push_back(findingJson(finding));
        }
        steps.push_back({{"number", step.number},
                         {"class", step.className},
                         {"description", step.description},
                         {"isLookedAt", !step.isUnknown},
                         {"pauseSeconds", step.pauseSeconds},
                         {"finds", std::move(findings)}});
    }
    const Platform::TreeSize sum = plan.sum();
    return {{"formatVersion", kPlanFormat},
            {"root", plan.inventory.root.empty() ? Json(nullptr) : Json(plan.inventory.root)},
            {"steps", std::move(steps)},
            {"stepCount", plan.steps.size()},
            {"stepsThatFindSomething", stepsThatFind(plan)},
            {"bytes", sum.bytes},
            {"files", sum.files},
            {"isComplete", sum.unread == 0 && plan.isComplete()},
            {"pauseSeconds", plan.pauseSeconds()},
            {"notLookedAt", plan.inventory.notLookedAt},
            {"couldNotLook", blindOf(plan)}};
}

}  // namespace Inspect
