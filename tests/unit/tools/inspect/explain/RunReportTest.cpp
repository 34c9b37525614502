#include "inspect/explain/RunReport.h"

#include <gtest/gtest.h>

#include "SampleRun.h"

namespace InspectUnitTests {

namespace {

using Inspect::Json;
using Inspect::runJson;
using Inspect::runReport;

constexpr std::size_t kWideEnough = 200;

TEST(RunReport, ShowsWhatFailed) {
    EXPECT_EQ(
        runReport({sampleRun()}, false, kWideEnough),
        "Run 3 of 3\n"
        "  Began     10:00:00\n"
        "  Ended     10:00:12, after 13 s\n"
        "  Who       Uninstall Sentrel, process 18; com.norvik.InstallerHelper, process 20\n"
        "  Result    Timed out: no final report within 60 s. The last line of the helper is of step 4 of "
        "5.\n"
        "  To do     Run the uninstaller again: every step can be repeated.\n"
        "  To do     Look at b.\n"
        "  Log       some <words>\n"
        "  Log       more\\x1b\n"
        "\n"
        "   3  failed       Deleting a & b...\n"
        "                   failed: /b\\x1b: Not <permitted>\n"
        "                   7 more are left out\n");
}

TEST(RunReport, ShowsEveryStepWhenAsked) {
    const std::string text = runReport({sampleRun()}, true, kWideEnough);
    EXPECT_EQ(text.substr(text.find("\n\n") + 1),
              "\n"
              "   1  done         Unloading daemon \"a\"...  (then a pause of 5 s)\n"
              "                   done: system/a\n"
              "   2  not there    Unloading daemon b...\n"
              "   3  failed       Deleting a & b...\n"
              "                   not there: /a: No such file\n"
              "                   failed: /b\\x1b: Not <permitted>\n"
              "                   7 more are left out\n"
              "   4  unknown      Closing c...\n"
              "  15  not reached  Deleting d...\n");
}

TEST(RunReport, SaysLittleOfARunThatTheLogSaysLittleOf) {
    LogRun run;
    run.number = 1;
    run.helper = 20;
    LogRun other;
    other.number = 2;
    other.uninstaller = 18;
    other.ended = "now";
    other.beganSeconds = 5;
    other.endedSeconds = 4;
    EXPECT_EQ(runReport({run, other}, true, kWideEnough),
              "Run 1 of 2\n"
              "  Began\n"
              "  Ended\n"
              "  Who       com.norvik.InstallerHelper, process 20\n"
              "  Result    Cut off: the log does not say how the run ended. The helper wrote no line of the "
              "list.\n"
              "  To do     Run the uninstaller again: every step can be repeated.\n"
              "\n"
              "Run 2 of 2\n"
              "  Began\n"
              "  Ended     now\n"
              "  Who       Uninstall Sentrel, process 18\n"
              "  Result    Cut off: the log does not say how the run ended. The helper wrote no line of the "
              "list.\n"
              "  To do     Run the uninstaller again: every step can be repeated.\n");
    EXPECT_EQ(runReport({}, true, kWideEnough), "No run of the uninstaller is in this log.\n");
}

TEST(RunReport, BreaksBetweenWordsAtTheWidth) {
    const auto shownWithin = [](const std::string& words, std::size_t width) {
        LogRun run;
        run.ending = Inspect::RunEnding::finished;
        run.words = {words};
        const std::string text = runReport({run}, false, width);
        return text.substr(text.find("  Log"));
    };
    EXPECT_EQ(shownWithin("one two three", 25), "  Log       one two three\n");
    EXPECT_EQ(shownWithin("one two three", 24), "  Log       one two\n            three\n");
    EXPECT_EQ(shownWithin("one two three", 19), "  Log       one two\n            three\n");
    EXPECT_EQ(shownWithin("one two three", 18), "  Log       one\n            two\n            three\n");
    EXPECT_EQ(shownWithin("one two three", 5), "  Log       one\n            two\n            three\n");
    // Columns, not bytes; blanks count once and not at the ends.
    EXPECT_EQ(shownWithin("\u00e9\u00e9 \u00e9\u00e9", 17), "  Log       \u00e9\u00e9 \u00e9\u00e9\n");
    EXPECT_EQ(shownWithin("one   two  ", 19), "  Log       one two\n");
}

TEST(RunReport, BreaksTheDetailsOfAStep) {
    LogRun run = sampleRun();
    const std::string text = runReport({run}, false, 40);
    EXPECT_NE(text.find("\n"
                        "   3  failed       Deleting a & b...\n"
                        "                   failed: /b\\x1b: Not\n"
                        "                   <permitted>\n"
                        "                   7 more are left out\n"),
              std::string::npos)
        << text;
}

TEST(RunJson, HoldsEverything) {
    LogRun run = sampleRun();
    run.steps.erase(run.steps.begin() + 1, run.steps.begin() + 2);
    run.steps.resize(2);
    const Json expected = Json::parse(R"({
        "formatVersion": 1,
        "runs": [{
            "number": 3,
            "ending": "timed-out",
            "result":
                "Timed out: no final report within 60 s. The last line of the helper is of step 4 of 2.",
            "advice": ["Run the uninstaller again: every step can be repeated.", "Look at b."],
            "began": "10:00:00",
            "ended": "10:00:12",
            "seconds": 12.5,
            "uninstaller": 18,
            "helper": 20,
            "consoleFound": true,
            "reached": 4,
            "helperFinished": false,
            "helperDied": false,
            "words": ["some <words>", "more\u001b"],
            "steps": [
                {"number": 1, "class": "RemoveCommand", "description": "Unloading daemon \"a\"...",
                 "outcome": "done", "pauses": true,
                 "details": [{"outcome": "done", "subject": "system/a", "reason": "", "advice": ""}],
                 "detailsLeftOut": 0},
                {"number": 3, "class": "RemoveCommand", "description": "Deleting a & b...",
                 "outcome": "failed", "pauses": false,
                 "details": [{"outcome": "not there", "subject": "/a", "reason": "No such file", "advice": ""},
                             {"outcome": "failed", "subject": "/b\u001b", "reason": "Not <permitted>",
                              "advice": "Look at b."}],
                 "detailsLeftOut": 7}]}]})");
    EXPECT_EQ(Inspect::jsonText(runJson({run})), Inspect::jsonText(expected));
    EXPECT_EQ(runJson({}).dump(), R"({"formatVersion":1,"runs":[]})");
}

TEST(RunJson, HasNullForWhatTheLogDoesNotSay) {
    LogRun run;
    run.number = 1;
    run.beganSeconds = 5;
    const Json json = runJson({run}).at("runs").at(0);
    for (const char* key : {"seconds", "uninstaller", "helper", "consoleFound"}) {
        EXPECT_EQ(json.at(key), nullptr) << key;
    }
    EXPECT_EQ(json.at("steps"), Json::array());
    run.beganSeconds.reset();
    run.endedSeconds = 5;
    run.helperDied = true;
    run.helperFinished = true;
    const Json other = runJson({run}).at("runs").at(0);
    EXPECT_EQ(other.at("seconds"), nullptr);
    EXPECT_EQ(other.at("helperDied"), true);
    EXPECT_EQ(other.at("helperFinished"), true);
}

}  // namespace

}  // namespace InspectUnitTests
