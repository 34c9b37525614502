#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "inspect/DisplayText.h"
#include "inspect/explain/RunReport.h"

namespace Inspect {

namespace {

// Colours by what a step became, readable on light and on dark ground; every colour is also a word.
constexpr std::string_view kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'; img-src data:">
<link rel="icon" href="data:,">
<title>Uninstallation of Sentrel: report</title>
<style>
:root { --ground: #fff; --text: #1d1d1f; --faint: #5c5c61; --line: #d8d8dc; --panel: #f5f5f7;
  --done: #1a7f37; --notthere: #6e6e73; --failed: #c4231c; --unknown: #8a5a00; --notreached: #8e8e93; --pause: #c7d7f2; }
@media (prefers-color-scheme: dark) {
  :root { --ground: #1c1c1e; --text: #f2f2f7; --faint: #aeaeb2; --line: #3a3a3c; --panel: #2c2c2e;
    --done: #4cd06b; --notthere: #aeaeb2; --failed: #ff6961; --unknown: #f0b429; --notreached: #8e8e93; --pause: #33456b; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1.5rem 1rem 4rem; max-width: 60rem; background: var(--ground); color: var(--text);
  font: 16px/1.5 -apple-system, "Helvetica Neue", Inter, Helvetica, Arial, sans-serif; }
h1 { font-size: 1.6rem; margin: 0 0 1rem; } h2 { font-size: 1.25rem; margin: 2.5rem 0 .5rem; } h3 { font-size: 1rem; margin: 1.5rem 0 .5rem; }
.result { padding: .75rem 1rem; border-radius: .6rem; background: var(--panel); border-left: .35rem solid var(--notthere); }
.result.good { border-color: var(--done); } .result.bad { border-color: var(--failed); }
dl { display: grid; grid-template-columns: max-content 1fr; gap: .15rem 1rem; margin: 1rem 0; }
dt { color: var(--faint); } dd { margin: 0; overflow-wrap: anywhere; }
svg { display: block; width: 100%; height: auto; } svg text { fill: var(--faint); font-size: 11px; }
table { width: 100%; border-collapse: collapse; } th, td { text-align: left; vertical-align: top; padding: .35rem .5rem; border-top: 1px solid var(--line); }
th { color: var(--faint); font-weight: 600; } td:first-child { text-align: right; color: var(--faint); white-space: nowrap; }
td { overflow-wrap: anywhere; } td ul { margin: .2rem 0 0; padding-left: 1.1rem; color: var(--faint); font-size: .875rem; }
.mark { font-weight: 600; white-space: nowrap; }
.done { color: var(--done); } .notthere { color: var(--notthere); } .failed { color: var(--failed); } .unknown { color: var(--unknown); } .notreached { color: var(--notreached); }
rect.done { fill: var(--done); } rect.notthere { fill: var(--notthere); } rect.failed { fill: var(--failed); }
rect.unknown { fill: var(--unknown); } rect.notreached { fill: var(--notreached); } rect.pause { fill: var(--pause); } line { stroke: var(--line); }
fieldset { border: 0; padding: 0; margin: .5rem 0; display: flex; flex-wrap: wrap; gap: .25rem 1rem; } legend { padding: 0; color: var(--faint); }
pre { overflow-x: auto; padding: .75rem 1rem; border-radius: .6rem; background: var(--panel); font-size: .8125rem; }
footer { margin-top: 3rem; color: var(--faint); font-size: .875rem; }
@media (max-width: 36rem) { th:nth-child(2), td:nth-child(2) { white-space: normal; } td, th { padding: .3rem .25rem; } }
@media print { fieldset { display: none; } }
)";

std::string escaped(std::string_view text) {
    std::string result;
    for (const char byte : shown(text)) {
        switch (byte) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += byte;
        }
    }
    return result;
}

std::string className(StepOutcome outcome) {
    std::string name(nameOf(outcome));
    std::erase(name, ' ');
    return name;
}

std::string_view markOnPage(StepOutcome outcome) {
    switch (outcome) {
        case StepOutcome::done:
            return "✓";
        case StepOutcome::notThere:
            return "–";
        case StepOutcome::failed:
            return "✗";
        case StepOutcome::unknown:
            return "?";
        case StepOutcome::notReached:
            break;
    }
    return "…";
}

constexpr std::array kOutcomes{StepOutcome::done, StepOutcome::notThere, StepOutcome::failed,
                               StepOutcome::unknown, StepOutcome::notReached};

std::string fixed(double number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", number);
    return text.data();
}

// Filters without a script: each box hides the rows of its outcome while it is not ticked.
std::string filterStyle(const std::vector<Run>& runs) {
    std::string style;
    for (const Run& each : runs) {
        for (const StepOutcome outcome : kOutcomes) {
            const std::string name = className(outcome);
            const std::string run = std::to_string(each.number);
            style += "#run" + run + ":has(#show";
            style += run + name + ":not(:checked)) tr.row";
            style += name + " { display: none; }\n";
        }
    }
    return style;
}

constexpr double kPictureWidth = 960;
constexpr double kPauseSeconds = 5;

struct Scale {
    double start;
    /// More than 0.
    double length;

    [[nodiscard]] double at(double seconds) const { return (seconds - start) / length * kPictureWidth; }
};

void appendBar(std::string& svg, const Scale& scale, double from, double to, const std::string& css,
               const std::string& title) {
    const double x = std::clamp(scale.at(from), 0.0, kPictureWidth - 3);
    const double width = std::clamp(scale.at(to) - x, 3.0, kPictureWidth - x);
    svg += "<rect class=\"" + css + "\" x=\"" + fixed(x) + "\" y=\"10\" width=\"" + fixed(width) +
           "\" height=\"34\" rx=\"2\"><title>" + escaped(title) + "</title></rect>\n";
}

void appendAxis(std::string& svg, const Scale& scale) {
    constexpr double kMostMarks = 8;
    double step = 1;
    for (const double next : {2.0, 5.0, 10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 1800.0, 3600.0}) {
        step = scale.length / step > kMostMarks ? next : step;
    }
    while (scale.length / step > kMostMarks) {
        step *= 2;
    }
    const auto marks = static_cast<long>(scale.length / step);
    for (long number = 0; number <= marks; ++number) {
        const double mark = static_cast<double>(number) * step;
        const std::string x = fixed(std::min(scale.at(scale.start + mark), kPictureWidth - 1));
        svg += "<line x1=\"" + x + "\" x2=\"";
        svg += x + "\" y1=\"46\" y2=\"52\"/>";
        const bool last = scale.at(scale.start + mark) > kPictureWidth - 30;
        svg += "<text x=\"" + x + "\" y=\"64\" text-anchor=\"" +
               (number == 0 ? "start"
                : last      ? "end"
                            : "middle") +
               "\">" + std::to_string(std::lround(mark)) + " s</text>\n";
    }
}

/// Where the time went; empty if the log does not say.
std::string timeline(const Run& run) {
    if (!run.beganSeconds || !run.endedSeconds || run.steps.empty() ||
        *run.endedSeconds <= *run.beganSeconds) {
        return {};
    }
    const Scale scale{*run.beganSeconds, *run.endedSeconds - *run.beganSeconds};
    std::string svg =
        "<h3>Where the time went</h3>\n<svg viewBox=\"0 0 960 70\" role=\"img\" aria-label=\"Timeline of " +
        durationOf(run).value_or("") + "; pauses after stopped daemons are marked\">\n";
    for (const StepReport& step : run.steps) {
        const std::string title = std::to_string(step.number) + ". " + step.description;
        if (step.first && step.pauses) {
            appendBar(svg, scale, *step.last, *step.last + kPauseSeconds, "pause",
                      title + " Pause of 5 s after it.");
        }
        if (step.first) {
            appendBar(svg, scale, *step.first, *step.last, className(step.outcome), title);
        }
    }
    appendAxis(svg, scale);
    return svg + "</svg>\n";
}

void appendDetails(std::string& page, const StepReport& step) {
    if (step.details.empty()) {
        return;
    }
    page += "<ul>";
    for (const StepDetail& detail : step.details) {
        page += "<li><span class=\"" + className(detail.outcome) + "\">" +
                std::string(nameOf(detail.outcome)) + "</span>: " + escaped(detail.subject);
        page += detail.reason.empty() ? "" : ": " + escaped(detail.reason);
        page += "</li>";
    }
    page += step.detailsLeftOut == 0 ? "" : "<li>" + leftOutText(step) + "</li>";
    page += "</ul>";
}

void appendTable(std::string& page, const Run& run, const std::string& number) {
    page += "<h3>Steps</h3>\n<fieldset><legend>Show</legend>\n";
    for (const StepOutcome outcome : kOutcomes) {
        if (run.count(outcome) > 0) {
            const std::string id = "show" + number + className(outcome);
            page += "<label><input type=\"checkbox\" id=\"" + id + "\" checked> <span class=\"" +
                    className(outcome) + "\">" + std::string(nameOf(outcome)) + "</span> (" +
                    std::to_string(run.count(outcome)) + ")</label>\n";
        }
    }
    page +=
        "</fieldset>\n<table>\n<thead><tr><th scope=\"col\">#</th><th scope=\"col\">Outcome</th>"
        "<th scope=\"col\">Step</th></tr></thead>\n<tbody>\n";
    for (const StepReport& step : run.steps) {
        const std::string css = className(step.outcome);
        page += "<tr class=\"row" + css + "\"><td>" + std::to_string(step.number) + "</td>";
        page += "<td class=\"mark " + css + "\"><span aria-hidden=\"true\">";
        page += std::string(markOnPage(step.outcome)) + "</span> ";
        page += std::string(nameOf(step.outcome)) + "</td><td>" + escaped(step.description);
        page += step.pauses ? " <span class=\"notthere\">(then a pause of 5 s)</span>" : "";
        appendDetails(page, step);
        page += "</td></tr>\n";
    }
    page += "</tbody>\n</table>\n";
}

void appendFact(std::string& page, std::string_view label, const std::string& text) {
    page += "<dt>" + std::string(label) + "</dt><dd>" + text + "</dd>\n";
}

void appendRun(std::string& page, const Run& run, std::size_t runs) {
    const std::string number = std::to_string(run.number);
    const bool good = run.ending == RunEnding::finished && run.count(StepOutcome::failed) == 0;
    page +=
        "<section id=\"run" + number + "\">\n<h2>Run " + number + " of " + std::to_string(runs) + "</h2>\n";
    page += std::string("<p class=\"result ") + (good ? "good" : "bad") + "\">" + escaped(resultOf(run)) +
            "</p>\n";
    const std::vector<std::string> advice = adviceFor(run);
    if (!advice.empty()) {
        page += "<h3>What to do</h3>\n<ul>\n";
        for (const std::string& each : advice) {
            page += "<li>" + escaped(each) + "</li>\n";
        }
        page += "</ul>\n";
    }
    page += "<dl>\n";
    appendFact(page, "Began", escaped(run.began));
    appendFact(page, "Ended", escaped(run.ended) + (durationOf(run) ? ", after " + *durationOf(run) : ""));
    appendFact(page, "Uninstaller",
               run.uninstaller ? "process " + std::to_string(*run.uninstaller) : "not in the log");
    appendFact(page, "Helper", run.helper ? "process " + std::to_string(*run.helper) : "not in the log");
    page += "</dl>\n" + timeline(run);
    if (!run.words.empty()) {
        page += "<h3>What the log says besides</h3>\n<pre>";
        for (const std::string& words : run.words) {
            page += escaped(words) + '\n';
        }
        page += "</pre>\n";
    }
    if (!run.steps.empty()) {
        appendTable(page, run, number);
    }
    page += "</section>\n";
}

}  // namespace

std::string runPage(const std::vector<Run>& runs) {
    std::string page(kHead);
    page += filterStyle(runs) + "</style>\n</head>\n<body>\n<main>\n<h1>Uninstallation of Sentrel</h1>\n";
    if (runs.empty()) {
        page += "<p class=\"result\">No run of the uninstaller is in this log.</p>\n";
    }
    for (const Run& run : runs) {
        appendRun(page, run, runs.back().number);
    }
    return page +
           "</main>\n<footer>Made by sentrel-inspect explain from a system log.</footer>\n</body>\n</html>\n";
}

}  // namespace Inspect
