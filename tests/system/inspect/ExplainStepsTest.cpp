// sentrel-inspect explain: what a log tells about the runs in it.

#include <algorithm>

#include "ExplainRun.h"
#include "InspectRun.h"
#include "SampleLog.h"
#include "support/InstallerLine.h"

namespace InspectTest {

namespace {

using TestSupport::installerLine;
using Entries = std::vector<SampleEntry>;

TEST_F(Explain, NamesTheItemThatResistedAndTheAdvice) {
    const std::string inside = "/Applications/Sentrel.app/Contents/Info.plist";
    const nlohmann::json run = onlyRun(replaced(
        finishedRun(), installerLine("Removed at /Applications/Sentrel.app"),
        {installerLine("Error removing: \"") + inside + "\" could not be removed: Operation not permitted"}));
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
        installerLine("Output: system/com.norvik.fileaccessd = {\n\tstate = running\n}\n");
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
        installerLine("Kext FileAccessFilter.kext unload failed. Return code: -23ff7ffa");
    const nlohmann::json run = onlyRun(replaced(finishedRun(), notLoaded, {}));
    EXPECT_EQ(outcome(run, 17), "done");
    EXPECT_EQ(outcome(run, 18), "not there");
}

TEST_F(Explain, PutsCodesOfKernelExtensionsIntoWords) {
    const std::string line = installerLine("Kext FileAccessFilter.kext unload failed. Return code: ");
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
        return entry.text == installerLine("Removed at /Applications/Sentrel.app");
    });
    entries.insert(firstRemoval, {1, kHelper, 20, installerLine("Kill result for pid 77: 0")});
    const nlohmann::json run = onlyRun(entries);
    EXPECT_EQ(outcome(run, 19), "done");
    EXPECT_EQ(run.at("steps").at(18).at("details").at(0).at("subject"), "process 77");
    EXPECT_EQ(countOf(run, "unknown"), 11U);
}

TEST_F(Explain, LeavesOutWhatAStepDidTooOften) {
    Entries entries = finishedRun();
    const auto firstRemoval = std::find_if(entries.begin(), entries.end(), [](const SampleEntry& entry) {
        return entry.text == installerLine("Removed at /Applications/Sentrel.app");
    });
    Entries killed(300, {1, kHelper, 20, installerLine("Kill result for pid 77: 0")});
    killed.push_back({1, kHelper, 20, installerLine("Kill result for pid 78: -1")});
    entries.insert(firstRemoval, killed.begin(), killed.end());
    const nlohmann::json step = onlyRun(entries).at("steps").at(18);
    EXPECT_EQ(step.at("outcome"), "failed");
    EXPECT_EQ(step.at("details").size(), 101U);
    EXPECT_EQ(step.at("details").at(0).at("advice"), "");
    EXPECT_EQ(step.at("details").at(100).at("subject"), "process 78");
    EXPECT_EQ(step.at("details").at(100).at("advice"),
              "Check whether it still runs; restart the Mac if it does.");
    EXPECT_EQ(step.at("detailsLeftOut"), 200);
    EXPECT_NE(inspect({"explain", "--all"}, logOf(entries))
                  .output.find("\n                   200 more are left out\n"),
              std::string::npos);
}

}  // namespace

}  // namespace InspectTest
