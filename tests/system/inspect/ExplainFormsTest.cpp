// sentrel-inspect explain: what a log tells about the runs in it.

#include "ExplainRun.h"
#include "InspectRun.h"
#include "SampleLog.h"
#include "support/InstallerLine.h"

namespace InspectTest {

namespace {

using TestSupport::installerLine;
using Entries = std::vector<SampleEntry>;

TEST_F(Explain, ReadsEveryFormOfALogAlike) {
    const nlohmann::json expected = runs(finishedRun(), LogForm::show);
    ASSERT_EQ(expected.size(), 1U);
    EXPECT_EQ(expected.at(0).at("ending"), "finished");
    EXPECT_EQ(expected.at(0).at("seconds"), 2.0);
    for (const LogForm form : {LogForm::systemLog, LogForm::syslog, LogForm::compact, LogForm::standardError,
                               LogForm::json, LogForm::ndjson}) {
        nlohmann::json all = runs(finishedRun(), form);
        for (const char* key : {"began", "ended"}) {
            EXPECT_NE(all.at(0).at(key), "") << static_cast<int>(form);
            all.at(0)[key] = expected.at(0).at(key);
        }
        EXPECT_EQ(all, expected) << static_cast<int>(form);
    }
}

TEST_F(Explain, PassesOverOtherProgramsEntries) {
    Entries entries = finishedRun();
    const std::size_t alone = runs(entries).at(0).at("words").size();
    entries.insert(entries.begin() + 5, {1, "kernel", 0, installerLine("Uninstallation failed.")});
    const nlohmann::json run = onlyRun(entries);
    EXPECT_EQ(run.at("ending"), "finished");
    EXPECT_EQ(run.at("words").size(), alone);
}

TEST_F(Explain, KeepsForgedTextInItsLine) {
    Entries entries = finishedRun();
    entries.insert(entries.begin() + 1, {0, kUninstaller, 18, "odd\x1b[31m \xE2\x80\xAE<b>text"});
    const Outcome told = inspect({"explain"}, logOf(entries));
    EXPECT_NE(told.output.find("  Log       odd\\x1b[31m \\xe2\\x80\\xae<b>text\n"), std::string::npos)
        << told.output;
    const Outcome page = inspect({"explain", "--html", "-"}, logOf(entries));
    EXPECT_NE(page.output.find("odd\\x1b[31m \\xe2\\x80\\xae&lt;b&gt;text\n"), std::string::npos);
}

TEST_F(Explain, SaysThatALogHasNoRun) {
    const Outcome told = inspect({"explain"}, logOf({{0, "kernel", 0, "hello"}}));
    EXPECT_EQ(told.status, 0);
    EXPECT_EQ(told.output, "No run of the uninstaller is in this log.\n");
}

TEST_F(Explain, RefusesAFileThatIsNotALog) {
    write("empty", "");
    write("text", "Just a note.\nNov 21, a date\n2026-11-21\n");
    write("archive", inspect({"commands", "uninstall", "--archive", "-"}).output);
    write("json", "{\"a\": 1}");
    std::filesystem::create_directory(path("folder"));
    for (const char* file : {"empty", "text", "archive", "json"}) {
        expectRefusal(inspect({"explain", file}), 1,
                      std::string(file) + ": not a system log: no line has the form of an entry");
    }
    expectRefusal(inspect({"explain", "folder"}), 1, "folder: Is a directory");
    expectRefusal(inspect({"explain", "missing"}), 1, "missing: No such file or directory");
}

TEST_F(Explain, SaysThatALogEndsInTheMiddleOfAnEntry) {
    const std::string whole = logOf(finishedRun(), LogForm::json);
    const Outcome told = inspect({"explain", "--json"}, whole.substr(0, whole.size() - 40));
    EXPECT_EQ(told.status, 0);
    EXPECT_EQ(told.errors, "sentrel-inspect: The log ends in the middle of an entry.\n");
    EXPECT_EQ(nlohmann::json::parse(told.output).at("runs").at(0).at("ending"), "finished");
}

TEST_F(Explain, ReadsAnEntryOfAnySizeAndGoesOn) {
    Entries entries = finishedRun();
    entries.insert(entries.begin() + 1, {0, kUninstaller, 18, std::string(1000000, 'x')});
    for (const LogForm form : {LogForm::systemLog, LogForm::ndjson}) {
        const nlohmann::json all = runs(entries, form);
        EXPECT_EQ(all.at(0).at("ending"), "finished") << static_cast<int>(form);
    }
}

TEST_F(Explain, WritesThePageBesideTheText) {
    const Outcome told = inspect({"explain", "--html", "report.html"}, logOf(finishedRun()));
    EXPECT_EQ(told.status, 0);
    EXPECT_TRUE(told.output.starts_with("Run 1 of 1\n"));
    const std::string page = read("report.html");
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n"));
    EXPECT_TRUE(page.ends_with("</html>\n"));
    EXPECT_EQ(page.find("<script"), std::string::npos);
    EXPECT_NE(page.find("<tr class=\"rowdone\"><td>31</td>"), std::string::npos);
    EXPECT_NE(page.find("Deleting user application Sentrel.app..."), std::string::npos);
    EXPECT_EQ(page.find("http://"), std::string::npos);
    EXPECT_EQ(page.find("https://"), std::string::npos);
}

TEST_F(Explain, ReadsAFileOrItsInput) {
    const std::string log = logOf(finishedRun());
    write("log", log);
    const Outcome told = inspect({"explain", "log"});
    EXPECT_EQ(told.status, 0) << told.errors;
    EXPECT_EQ(told.output, inspect({"explain"}, log).output);
    EXPECT_EQ(told.output, inspect({"explain", "-"}, log).output);
}

TEST_F(Explain, WritesThePageAloneToItsOutput) {
    const std::string log = logOf(finishedRun());
    EXPECT_EQ(inspect({"explain", "--html", "page.html", "--json"}, log).output,
              inspect({"explain", "--json"}, log).output);
    EXPECT_EQ(inspect({"explain", "--html", "-", "--json"}, log).output, read("page.html"));
}

TEST_F(Explain, SaysThatThePageCannotBePut) {
    const Outcome told = inspect({"explain", "--html", "missing/page.html"}, logOf(finishedRun()));
    EXPECT_EQ(told.status, 1);
    EXPECT_EQ(told.output, "");
    EXPECT_EQ(told.errors, "sentrel-inspect: missing/page.html: No such file or directory\n");
}

TEST_F(Explain, SaysWhenItsOutputTakesNoMore) {
    write("log", logOf(finishedRun()));
    for (const char* option : {"--follow", "--all", "--json"}) {
        const Outcome told = inspectUnder({.output = "/dev/full"}, {"explain", option, "log"});
        EXPECT_EQ(told.status, 1) << option;
        EXPECT_EQ(told.errors, "sentrel-inspect: standard output: No space left on device\n") << option;
    }
}

TEST_F(Explain, ShowsNoTimelineOfARunThatTheClockEndedBeforeItsBeginning) {
    constexpr auto kTimeline = "<h3>Where the time went</h3>";
    Entries entries = finishedRun();
    EXPECT_NE(inspect({"explain", "--html", "-"}, logOf(entries)).output.find(kTimeline), std::string::npos);
    entries.front().second = 30;
    const Outcome page = inspect({"explain", "--html", "-"}, logOf(entries));
    EXPECT_EQ(page.status, 0);
    EXPECT_NE(page.output.find("Deleting user application Sentrel.app..."), std::string::npos);
    EXPECT_EQ(page.output.find(kTimeline), std::string::npos);
}

}  // namespace

}  // namespace InspectTest
