// sentrel-inspect explain: what a log tells about the runs in it.

#include "ExplainRun.h"
#include "InspectRun.h"
#include "SampleLog.h"
#include "support/InstallerLine.h"

namespace InspectTest {

namespace {

using TestSupport::installerLine;
using Entries = std::vector<SampleEntry>;

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

TEST_F(Explain, TellsWhyARunWasRefused) {
    const auto refused = [this](const Entries& before) {
        Entries entries = before;
        entries.push_back({1, kUninstaller, 18, kFailed});
        return onlyRun(entries);
    };
    const auto line = [](const std::string& text) { return SampleEntry{0, kUninstaller, 18, text}; };

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
    EXPECT_EQ(refused({line(installerLine("found installed version true, updatable: true")),
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
        onlyRun({{0, kUninstaller, 18, installerLine("found installed version true, updatable: false")},
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

}  // namespace

}  // namespace InspectTest
