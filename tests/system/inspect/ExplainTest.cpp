// sentrel-inspect explain: what a log tells about the runs in it.

#include <algorithm>

#include "InspectRun.h"
#include "SampleLog.h"

namespace InspectTest {

namespace {

using Entries = std::vector<SampleEntry>;

constexpr const char* kFailed = "[SNTM Installer] Uninstallation failed.";

/// The runs of a log with these entries.
class Explain : public Inspect {
  protected:
    [[nodiscard]] nlohmann::json runs(const Entries& entries, LogForm form = LogForm::systemLog) const {
        const nlohmann::json document = json({"explain", "--json"}, logOf(entries, form));
        EXPECT_EQ(document.at("formatVersion"), 1);
        return document.at("runs");
    }

    [[nodiscard]] nlohmann::json onlyRun(const Entries& entries) const {
        const nlohmann::json all = runs(entries);
        EXPECT_EQ(all.size(), 1U);
        return all.at(0);
    }
};

std::string outcome(const nlohmann::json& run, std::size_t step) {
    return run.at("steps").at(step - 1).at("outcome");
}

std::size_t countOf(const nlohmann::json& run, const std::string& wanted) {
    const nlohmann::json& steps = run.at("steps");
    return static_cast<std::size_t>(
        std::count_if(steps.begin(), steps.end(),
                      [&](const nlohmann::json& step) { return step.at("outcome") == wanted; }));
}

/// The entries with those whose text is `text` replaced by others.
Entries replaced(Entries entries, const std::string& text, const std::vector<std::string>& others) {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const SampleEntry& entry) { return entry.text == text; });
    EXPECT_NE(found, entries.end()) << text;
    const SampleEntry model = *found;
    auto at = entries.erase(found);
    for (const std::string& other : others) {
        at = entries.insert(at, {model.second, model.program, model.pid, other}) + 1;
    }
    return entries;
}

TEST_F(Explain, TellsOfAFinishedRun) {
    const Outcome told = inspect({"explain"}, logOf(finishedRun()));
    EXPECT_EQ(told.status, 0) << told.errors;
    EXPECT_EQ(told.output,
              "Run 1 of 1\n"
              "  Began     Nov 21 10:00:00\n"
              "  Ended     Nov 21 10:00:02, after 2 s\n"
              "  Who       Uninstall Sentrel, process 18; com.norvik.InstallerHelper, process 20\n"
              "  Result    Finished. The helper went through all 75 steps: 2 did something, 73 found nothing "
              "to do,\n"
              "            0 failed.\n");
}

TEST_F(Explain, ShowsEveryStepWhenAsked) {
    const std::string text = inspect({"explain", "--all"}, logOf(finishedRun())).output;
    EXPECT_NE(
        text.find("\n   1  not there    Unloading daemon com.norvik.containmentd...\n"
                  "                   not there: system/com.norvik.containmentd: the job is not loaded\n"),
        std::string::npos)
        << text;
    EXPECT_NE(text.find("\n  31  done         Deleting user application Sentrel.app...\n"
                        "                   done: /Applications/Sentrel.app\n"),
              std::string::npos);
    EXPECT_NE(text.find("\n  75  not there    Deleting auxiliary helper tools...\n"), std::string::npos);
}

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
    entries.insert(entries.begin() + 5, {1, "kernel", 0, "[SNTM Installer] Uninstallation failed."});
    const nlohmann::json run = onlyRun(entries);
    EXPECT_EQ(run.at("ending"), "finished");
    EXPECT_EQ(run.at("words").size(), alone);
}

TEST_F(Explain, TellsWhyARunWasRefused) {
    const auto refused = [this](const Entries& before) {
        Entries entries = before;
        entries.push_back({1, kUninstaller, 18, kFailed});
        return onlyRun(entries);
    };
    const auto line = [](const char* text) { return SampleEntry{0, kUninstaller, 18, text}; };

    const nlohmann::json rights = refused({line("Helper authorization and blessing failed. Quitting...")});
    EXPECT_EQ(rights.at("ending"), "not-authorized");
    EXPECT_EQ(rights.at("result"), "Refused: no administrator rights, or a helper could not be installed.");
    EXPECT_EQ(rights.at("advice"), nlohmann::json({"Run it as an administrator; with --silent, as root."}));

    const nlohmann::json blessing = refused(
        {line("SMJobBless error: The operation couldn’t be completed. (CFErrorDomainLaunchd error 9.)"),
         line("Helper authorization and blessing failed. Quitting...")});
    EXPECT_EQ(blessing.at("result"), "Refused: a helper could not be installed: the helper is switched off.");
    EXPECT_EQ(blessing.at("words").size(), 1U);

    const nlohmann::json package = refused(
        {line("The package is damaged."), line("Failed to install Swift runtime support. Quitting...")});
    EXPECT_EQ(package.at("ending"), "package-not-installed");
    EXPECT_EQ(package.at("words"), nlohmann::json({"The package is damaged."}));

    EXPECT_EQ(refused({line("Antivirus cannot be uninstalled")}).at("ending"), "nothing-installed");
    EXPECT_EQ(refused({line("[SNTM Installer] found installed version true, updatable: true"),
                       line("Antivirus cannot be uninstalled")})
                  .at("ending"),
              "newer-installed");
}

TEST_F(Explain, SaysThatARunTimedOutAndHowFarTheHelperCame) {
    Entries entries = finishedRun();
    entries.resize(40);
    entries.push_back({61, kUninstaller, 18, kFailed});
    const nlohmann::json run = onlyRun(entries);
    EXPECT_EQ(run.at("ending"), "timed-out");
    EXPECT_EQ(run.at("helperFinished"), false);
    EXPECT_EQ(run.at("reached"), 36U);
    EXPECT_EQ(run.at("result"),
              "Timed out: no final report within 60 s. The last line of the helper is of step 36 of 75.");
    EXPECT_EQ(outcome(run, 37), "not reached");
    EXPECT_EQ(run.at("advice"), nlohmann::json({"Run the uninstaller again: every step can be repeated."}));
}

TEST_F(Explain, SaysThatTheHelperFinishedAfterATimeOut) {
    Entries entries = finishedRun();
    entries.resize(entries.size() - 2);
    entries.insert(entries.begin() + 40, {61, kUninstaller, 18, kFailed});
    const nlohmann::json run = onlyRun(entries);
    EXPECT_EQ(run.at("ending"), "timed-out");
    EXPECT_EQ(run.at("helperFinished"), true);
    EXPECT_EQ(run.at("advice"), nlohmann::json::array());
}

TEST_F(Explain, SaysThatTheHelperWroteNothing) {
    const nlohmann::json run =
        onlyRun({{0, kUninstaller, 18, "[SNTM Installer] found installed version true, updatable: false"},
                 {60, kUninstaller, 18, kFailed}});
    EXPECT_EQ(run.at("result"),
              "Timed out: no final report within 60 s. The helper wrote no line of the list.");
    EXPECT_EQ(run.at("steps"), nlohmann::json::array());
    EXPECT_EQ(run.at("helper"), nullptr);
    EXPECT_EQ(run.at("consoleFound"), false);
}

TEST_F(Explain, SaysThatTheHelperDied) {
    Entries entries = finishedRun();
    entries.resize(30);
    entries.push_back({3, "launchd", 1, "Job com.norvik.InstallerHelper was ended by signal 9"});
    const nlohmann::json run = onlyRun(entries);
    EXPECT_EQ(run.at("ending"), "cut-off");
    EXPECT_EQ(run.at("helperDied"), true);
    EXPECT_EQ(
        run.at("result"),
        "Cut off: the log does not say how the run ended. The helper's process ended after step 31 of 75.");
}

TEST_F(Explain, TakesTheHelpersLinesAloneForARunInAWindow) {
    const nlohmann::json run = onlyRun(helperLines());
    EXPECT_EQ(run.at("ending"), "finished");
    EXPECT_EQ(run.at("uninstaller"), nullptr);
    EXPECT_EQ(run.at("helper"), 20);
}

TEST_F(Explain, KeepsRunsApart) {
    Entries entries = finishedRun();
    const std::size_t half = entries.size();
    for (SampleEntry entry : finishedRun()) {
        entry.pid += 100;
        entry.second += 60;
        entries.push_back(entry);
    }
    entries.erase(entries.begin() + 60, entries.begin() + static_cast<std::ptrdiff_t>(half));
    const nlohmann::json all = runs(entries);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all.at(0).at("ending"), "cut-off");
    EXPECT_EQ(all.at(0).at("helper"), 20);
    EXPECT_EQ(all.at(1).at("ending"), "finished");
    EXPECT_EQ(all.at(1).at("helper"), 120);
}

TEST_F(Explain, KnowsTwoListsThatOneHelperExecuted) {
    Entries entries = helperLines(1);
    for (const SampleEntry& entry : helperLines(5)) {
        entries.push_back(entry);
    }
    const nlohmann::json all = runs(entries);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all.at(0).at("ending"), "finished");
    EXPECT_EQ(all.at(1).at("ending"), "finished");
    EXPECT_EQ(all.at(1).at("began"), "Nov 21 10:00:05");
}

TEST_F(Explain, NamesTheItemThatResistedAndTheAdvice) {
    const std::string inside = "/Applications/Sentrel.app/Contents/Info.plist";
    const nlohmann::json run =
        onlyRun(replaced(finishedRun(), "[SNTM Installer] Removed at /Applications/Sentrel.app",
                         {"[SNTM Installer] Error removing: \"" + inside +
                          "\" could not be removed: Operation not permitted"}));
    EXPECT_EQ(outcome(run, 31), "failed");
    EXPECT_EQ(countOf(run, "failed"), 1U);
    EXPECT_EQ(run.at("steps").at(30).at("details").at(0),
              nlohmann::json(
                  {{"outcome", "failed"},
                   {"subject", inside},
                   {"reason", "Operation not permitted"},
                   {"advice",
                    "Take the immutable flag off (chflags -R nouchg,noschg PATH) or give the helper Full "
                    "Disk Access, then run the uninstaller again."}}));
    EXPECT_EQ(run.at("advice").size(), 1U);
}

TEST_F(Explain, TellsAStoppedDaemonFromOneThatLaunchdKeeps) {
    const std::string absent =
        toolFailure("Could not find service \"com.norvik.fileaccessd\" in domain for system", 113);
    const std::string registered =
        "[SNTM Installer] Output: system/com.norvik.fileaccessd = {\n\tstate = running\n}\n";
    const nlohmann::json stopped = onlyRun(replaced(finishedRun(), absent, {registered}));
    EXPECT_EQ(outcome(stopped, 2), "done");
    EXPECT_EQ(stopped.at("steps").at(1).at("pauses"), true);
    EXPECT_EQ(outcome(stopped, 3), "not there");

    const nlohmann::json kept = onlyRun(replaced(
        finishedRun(), absent, {registered, toolFailure("Boot-out failed: 5: Input/output error", 5)}));
    EXPECT_EQ(outcome(kept, 2), "failed");
    EXPECT_EQ(kept.at("steps").at(1).at("pauses"), false);
    EXPECT_EQ(kept.at("steps").at(1).at("details").at(0).at("reason"),
              "launchd refused without a reason (Boot-out failed: 5: Input/output error)");
}

TEST_F(Explain, GivesALoneNotLoadedExtensionToTheSecondUnloading) {
    const std::string notLoaded =
        "[SNTM Installer] Kext FileAccessFilter.kext unload failed. Return code: -23ff7ffa";
    const nlohmann::json run = onlyRun(replaced(finishedRun(), notLoaded, {}));
    EXPECT_EQ(outcome(run, 17), "done");
    EXPECT_EQ(outcome(run, 18), "not there");
}

TEST_F(Explain, PutsCodesOfKernelExtensionsIntoWords) {
    const std::string line = "[SNTM Installer] Kext FileAccessFilter.kext unload failed. Return code: ";
    const auto first = [&](const std::string& code) {
        return onlyRun(replaced(finishedRun(), line + "-23ff7ffa", {line + code}))
            .at("steps")
            .at(16)
            .at("details")
            .at(0);
    };
    EXPECT_EQ(first("-23ff7fe8").at("reason"), "in use (-23ff7fe8)");
    EXPECT_EQ(first("-23ff7fe8").at("advice"),
              "Restart the Mac: the extension is gone from the disk and is not loaded again.");
    EXPECT_EQ(first("-23ff7ffa").at("outcome"), "not there");
    EXPECT_EQ(first("1234").at("reason"), "unknown reason (1234)");
    EXPECT_EQ(first("nonsense").at("outcome"), "failed");
}

TEST_F(Explain, SaysThatTheLogDoesNotTellWhichApplicationWasClosed) {
    Entries entries = finishedRun();
    const auto firstRemoval = std::find_if(entries.begin(), entries.end(), [](const SampleEntry& entry) {
        return entry.text == "[SNTM Installer] Removed at /Applications/Sentrel.app";
    });
    entries.insert(firstRemoval, {1, kHelper, 20, "[SNTM Installer] Kill result for pid 77: 0"});
    const nlohmann::json run = onlyRun(entries);
    EXPECT_EQ(outcome(run, 19), "done");
    EXPECT_EQ(run.at("steps").at(18).at("details").at(0).at("subject"), "process 77");
    EXPECT_EQ(countOf(run, "unknown"), 11U);
}

TEST_F(Explain, LeavesOutWhatAStepDidTooOften) {
    Entries entries = finishedRun();
    const auto firstRemoval = std::find_if(entries.begin(), entries.end(), [](const SampleEntry& entry) {
        return entry.text == "[SNTM Installer] Removed at /Applications/Sentrel.app";
    });
    Entries killed(300, {1, kHelper, 20, "[SNTM Installer] Kill result for pid 77: 0"});
    killed.push_back({1, kHelper, 20, "[SNTM Installer] Kill result for pid 78: -1"});
    entries.insert(firstRemoval, killed.begin(), killed.end());
    const nlohmann::json step = onlyRun(entries).at("steps").at(18);
    EXPECT_EQ(step.at("outcome"), "failed");
    EXPECT_EQ(step.at("details").size(), 101U);
    EXPECT_EQ(step.at("details").at(100).at("subject"), "process 78");
    EXPECT_EQ(step.at("detailsLeftOut"), 200);
    EXPECT_NE(inspect({"explain", "--all"}, logOf(entries))
                  .output.find("\n                   200 more are left out\n"),
              std::string::npos);
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

}  // namespace

}  // namespace InspectTest
