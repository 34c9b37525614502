// The page of sentrel-inspect explain, between its style and its end.

#include <gtest/gtest.h>

#include "SampleRun.h"
#include "inspect/explain/RunReport.h"

namespace InspectUnitTests {

namespace {

using Inspect::runPage;
using Inspect::StepOutcome;

/// The part of the page from one text up to another one, which is left out.
std::string part(const std::string& page, const std::string& from, const std::string& upTo) {
    const std::size_t start = page.find(from);
    EXPECT_NE(start, std::string::npos) << from;
    const std::size_t end = page.find(upTo, start);
    EXPECT_NE(end, std::string::npos) << upTo;
    return page.substr(start, end - start);
}

/// The timeline's bars and axis.
std::string timeline(const LogRun& run) {
    return part(runPage({run}), "<svg", "</svg>");
}

/// A run of so many seconds with one step at its beginning.
LogRun runOf(double seconds) {
    LogRun run;
    run.beganSeconds = 50;
    run.endedSeconds = 50 + seconds;
    run.steps = {stepWith(1, StepOutcome::done, "Deleting a...")};
    run.steps[0].first = 50;
    run.steps[0].last = 50;
    return run;
}

/// What is written at the marks of the axis.
std::vector<std::string> marksOf(double seconds) {
    const std::string svg = timeline(runOf(seconds));
    std::vector<std::string> marks;
    for (std::size_t at = svg.find("<text"); at != std::string::npos; at = svg.find("<text", at + 1)) {
        const std::size_t start = svg.find('>', at) + 1;
        marks.push_back(svg.substr(start, svg.find('<', start) - start));
    }
    return marks;
}

using Marks = std::vector<std::string>;

TEST(RunPage, ShowsARun) {
    LogRun run = sampleRun();
    run.began = "<10>";
    EXPECT_EQ(part(runPage({run}), "</style>", "<h3>Where"),
              R"(</style>
</head>
<body>
<main>
<h1>Uninstallation of Sentrel</h1>
<section id="run3">
<h2>Run 3 of 3</h2>
<p class="result bad">Timed out: no final report within 60 s. The last line of the helper is of step 4 of 5.</p>
<h3>What to do</h3>
<ul>
<li>Run the uninstaller again: every step can be repeated.</li>
<li>Look at b.</li>
</ul>
<dl>
<dt>Began</dt><dd>&lt;10&gt;</dd>
<dt>Ended</dt><dd>10:00:12, after 13 s</dd>
<dt>Uninstaller</dt><dd>process 18</dd>
<dt>Helper</dt><dd>process 20</dd>
</dl>
)");
}

TEST(RunPage, ShowsTheWordsAndStepsOfARun) {
    const std::string page = runPage({sampleRun()});
    EXPECT_EQ(page.substr(page.find("</svg>")), R"(</svg>
<h3>What the log says besides</h3>
<pre>some &lt;words&gt;
more\x1b
</pre>
<h3>Steps</h3>
<fieldset><legend>Show</legend>
<label><input type="checkbox" id="show3done" checked> <span class="done">done</span> (1)</label>
<label><input type="checkbox" id="show3notthere" checked> <span class="notthere">not there</span> (1)</label>
<label><input type="checkbox" id="show3failed" checked> <span class="failed">failed</span> (1)</label>
<label><input type="checkbox" id="show3unknown" checked> <span class="unknown">unknown</span> (1)</label>
<label><input type="checkbox" id="show3notreached" checked> <span class="notreached">not reached</span> (1)</label>
</fieldset>
<table>
<thead><tr><th scope="col">#</th><th scope="col">Outcome</th><th scope="col">Step</th></tr></thead>
<tbody>
<tr class="rowdone"><td>1</td><td class="mark done"><span aria-hidden="true">✓</span> done</td><td>Unloading daemon &quot;a&quot;... <span class="notthere">(then a pause of 5 s)</span><ul><li><span class="done">done</span>: system/a</li></ul></td></tr>
<tr class="rownotthere"><td>2</td><td class="mark notthere"><span aria-hidden="true">–</span> not there</td><td>Unloading daemon b...</td></tr>
<tr class="rowfailed"><td>3</td><td class="mark failed"><span aria-hidden="true">✗</span> failed</td><td>Deleting a &amp; b...<ul><li><span class="notthere">not there</span>: /a: No such file</li><li><span class="failed">failed</span>: /b\x1b: Not &lt;permitted&gt;</li><li>7 more are left out</li></ul></td></tr>
<tr class="rowunknown"><td>4</td><td class="mark unknown"><span aria-hidden="true">?</span> unknown</td><td>Closing c...</td></tr>
<tr class="rownotreached"><td>15</td><td class="mark notreached"><span aria-hidden="true">…</span> not reached</td><td>Deleting d...</td></tr>
</tbody>
</table>
</section>
</main>
<footer>Made by sentrel-inspect explain from a system log.</footer>
</body>
</html>
)");
}

TEST(RunPage, ShowsLittleOfARunThatTheLogSaysLittleOf) {
    LogRun run;
    run.number = 1;
    run.ending = Inspect::RunEnding::finished;
    run.ended = "now";
    LogRun other = run;
    other.number = 2;
    other.steps = {stepWith(1, StepOutcome::failed, "Deleting a...")};
    const std::string page = runPage({run, other});
    EXPECT_EQ(part(page, "<main>", "<section id=\"run2\">"), R"(<main>
<h1>Uninstallation of Sentrel</h1>
<section id="run1">
<h2>Run 1 of 2</h2>
<p class="result good">Finished. The log has no line of the helper.</p>
<dl>
<dt>Began</dt><dd></dd>
<dt>Ended</dt><dd>now</dd>
<dt>Uninstaller</dt><dd>not in the log</dd>
<dt>Helper</dt><dd>not in the log</dd>
</dl>
</section>
)");
    EXPECT_NE(page.find("<h2>Run 2 of 2</h2>\n<p class=\"result bad\">Finished, with something left. "),
              std::string::npos)
        << page;
}

TEST(RunPage, SaysThatALogHasNoRun) {
    EXPECT_EQ(part(runPage({}), "<style>", ":root"), "<style>\n");
    EXPECT_EQ(part(runPage({}), "</style>", "</html>"), R"(</style>
</head>
<body>
<main>
<h1>Uninstallation of Sentrel</h1>
<p class="result">No run of the uninstaller is in this log.</p>
</main>
<footer>Made by sentrel-inspect explain from a system log.</footer>
</body>
)");
}

TEST(RunPage, HasARuleForEachBoxOfEachRun) {
    LogRun other = sampleRun();
    other.number = 4;
    EXPECT_EQ(part(runPage({sampleRun(), other}), "#run3", "</style>"),
              "#run3:has(#show3done:not(:checked)) tr.rowdone { display: none; }\n"
              "#run3:has(#show3notthere:not(:checked)) tr.rownotthere { display: none; }\n"
              "#run3:has(#show3failed:not(:checked)) tr.rowfailed { display: none; }\n"
              "#run3:has(#show3unknown:not(:checked)) tr.rowunknown { display: none; }\n"
              "#run3:has(#show3notreached:not(:checked)) tr.rownotreached { display: none; }\n"
              "#run4:has(#show4done:not(:checked)) tr.rowdone { display: none; }\n"
              "#run4:has(#show4notthere:not(:checked)) tr.rownotthere { display: none; }\n"
              "#run4:has(#show4failed:not(:checked)) tr.rowfailed { display: none; }\n"
              "#run4:has(#show4unknown:not(:checked)) tr.rowunknown { display: none; }\n"
              "#run4:has(#show4notreached:not(:checked)) tr.rownotreached { display: none; }\n");
}

TEST(RunPage, HasABoxForTheOutcomesOfARunOnly) {
    LogRun run = sampleRun();
    run.steps.resize(2);
    EXPECT_EQ(part(runPage({run}), "<fieldset>", "</fieldset>"),
              "<fieldset><legend>Show</legend>\n"
              "<label><input type=\"checkbox\" id=\"show3done\" checked> <span class=\"done\">done</span> "
              "(1)</label>\n"
              "<label><input type=\"checkbox\" id=\"show3notthere\" checked> <span class=\"notthere\">not "
              "there</span> "
              "(1)</label>\n");
}

TEST(RunPage, DrawsStepsAndPausesOnATimeline) {
    EXPECT_EQ(part(runPage({sampleRun()}), "<h3>Where", "<h3>What"), R"(<h3>Where the time went</h3>
<svg viewBox="0 0 960 70" role="img" aria-label="Timeline of 13 s; pauses after stopped daemons are marked">
<rect class="pause" x="153.6" y="10" width="384.0" height="34" rx="2"><title>1. Unloading daemon &quot;a&quot;... Pause of 5 s after it.</title></rect>
<rect class="done" x="76.8" y="10" width="76.8" height="34" rx="2"><title>1. Unloading daemon &quot;a&quot;...</title></rect>
<rect class="failed" x="537.6" y="10" width="422.4" height="34" rx="2"><title>3. Deleting a &amp; b...</title></rect>
<line x1="0.0" x2="0.0" y1="46" y2="52"/><text x="0.0" y="64" text-anchor="start">0 s</text>
<line x1="153.6" x2="153.6" y1="46" y2="52"/><text x="153.6" y="64" text-anchor="middle">2 s</text>
<line x1="307.2" x2="307.2" y1="46" y2="52"/><text x="307.2" y="64" text-anchor="middle">4 s</text>
<line x1="460.8" x2="460.8" y1="46" y2="52"/><text x="460.8" y="64" text-anchor="middle">6 s</text>
<line x1="614.4" x2="614.4" y1="46" y2="52"/><text x="614.4" y="64" text-anchor="middle">8 s</text>
<line x1="768.0" x2="768.0" y1="46" y2="52"/><text x="768.0" y="64" text-anchor="middle">10 s</text>
<line x1="921.6" x2="921.6" y1="46" y2="52"/><text x="921.6" y="64" text-anchor="middle">12 s</text>
</svg>
)");
}

TEST(RunPage, KeepsBarsAndMarksOnTheTimeline) {
    LogRun run = runOf(8);
    run.steps[0].first = 40;
    run.steps[0].last = 41;
    run.steps.push_back(stepWith(2, StepOutcome::failed, "Deleting b..."));
    run.steps[1].first = 58;
    run.steps[1].last = 70;
    run.steps[1].pauses = true;
    const std::string svg = timeline(run);
    EXPECT_EQ(
        part(svg, "<rect", "<line"),
        R"(<rect class="done" x="0.0" y="10" width="3.0" height="34" rx="2"><title>1. Deleting a...</title></rect>
<rect class="pause" x="957.0" y="10" width="3.0" height="34" rx="2"><title>2. Deleting b... Pause of 5 s after it.</title></rect>
<rect class="failed" x="957.0" y="10" width="3.0" height="34" rx="2"><title>2. Deleting b...</title></rect>
)");
    EXPECT_EQ(svg.substr(svg.rfind("<line")),
              "<line x1=\"959.0\" x2=\"959.0\" y1=\"46\" y2=\"52\"/><text x=\"959.0\" y=\"64\" "
              "text-anchor=\"end\">8 s</text>\n");
}

TEST(RunPage, PutsTheLastMarksTextBesideItNearTheEnd) {
    const auto anchorOfTheLast = [](double seconds) {
        const std::string svg = timeline(runOf(seconds));
        return part(svg.substr(svg.rfind("text-anchor")), "\"", ">");
    };
    // At 930 of 960 ends the room for both sides of it.
    EXPECT_EQ(anchorOfTheLast(1 / 929.5 * 960), "\"middle\"");
    EXPECT_EQ(anchorOfTheLast(1 / 930.5 * 960), "\"end\"");
    EXPECT_EQ(anchorOfTheLast(0.5), "\"start\"");
}

TEST(RunPage, HasEightMarksOfRoundNumbersAtMost) {
    EXPECT_EQ(marksOf(8), (Marks{"0 s", "1 s", "2 s", "3 s", "4 s", "5 s", "6 s", "7 s", "8 s"}));
    EXPECT_EQ(marksOf(8.5), (Marks{"0 s", "2 s", "4 s", "6 s", "8 s"}));
    EXPECT_EQ(marksOf(16).at(1), "2 s");
    EXPECT_EQ(marksOf(28800).at(1), "3600 s");
    EXPECT_EQ(marksOf(57600).at(1), "7200 s");
    EXPECT_EQ(marksOf(16.5), (Marks{"0 s", "5 s", "10 s", "15 s"}));
    const std::vector<std::pair<double, std::string>> seconds{
        {40.5, "10 s"},      {80.5, "15 s"},      {120.5, "30 s"},   {240.5, "60 s"},
        {480.5, "120 s"},    {960.5, "300 s"},    {2400.5, "600 s"}, {4800.5, "1800 s"},
        {14400.5, "3600 s"}, {28800.5, "7200 s"}, {57601, "14400 s"}};
    for (const auto& [length, first] : seconds) {
        EXPECT_EQ(marksOf(length).at(1), first) << length;
        EXPECT_LE(marksOf(length).size(), 9U) << length;
    }
}

TEST(RunPage, HasNoTimelineWhereTheLogGivesNoTimes) {
    const auto hasTimeline = [](const LogRun& run) {
        return runPage({run}).find("<svg") != std::string::npos;
    };
    EXPECT_TRUE(hasTimeline(runOf(1)));
    EXPECT_FALSE(hasTimeline(runOf(0)));
    EXPECT_FALSE(hasTimeline(runOf(-1)));
    LogRun run = runOf(1);
    run.steps.clear();
    EXPECT_FALSE(hasTimeline(run));
    run = runOf(1);
    run.beganSeconds.reset();
    EXPECT_FALSE(hasTimeline(run));
    run = runOf(1);
    run.endedSeconds.reset();
    EXPECT_FALSE(hasTimeline(run));
}

}  // namespace

}  // namespace InspectUnitTests
