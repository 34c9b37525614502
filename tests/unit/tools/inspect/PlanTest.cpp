#include "Plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

#include "InspectedMac.h"

namespace InspectUnitTests {

namespace {

using Inspect::Plan;
using Inspect::PlanFinding;
using Inspect::PlanStep;
using Platform::ItemKind;
using Lines = std::vector<std::string>;

class MakePlan : public testing::Test {
  protected:
    Plan make(const std::string& root = "") {
        return Inspect::makePlan({mac.look(root), processes, mac.files, [](const Platform::TreeSize&) {}});
    }
    /// "31: /Applications/Sentrel.app" for everything that is found, "31>" when it goes with another step.
    static Lines findings(const Plan& plan) {
        Lines lines;
        for (const PlanStep& step : plan.steps) {
            for (const PlanFinding& finding : step.findings) {
                lines.push_back(std::to_string(step.number) +
                                (finding.goesWithStep ? ">" + std::to_string(*finding.goesWithStep) : "") +
                                ": " + finding.name);
            }
        }
        return lines;
    }

    InspectedMac mac;
    std::vector<NorvikCommon::PMProcess> processes;
};

TEST_F(MakePlan, HasAllStepsWhereNothingIsInstalled) {
    const Plan plan = make();
    ASSERT_EQ(plan.steps.size(), 75U);
    EXPECT_EQ(plan.steps[0].className, "StopLaunchdJobCommand");
    EXPECT_EQ(plan.steps[0].description, "Unloading daemon com.norvik.containmentd...");
    EXPECT_EQ(plan.steps[74].number, 75U);
    EXPECT_EQ(plan.steps[74].description, "Deleting auxiliary helper tools...");
    EXPECT_TRUE(std::none_of(plan.steps.begin(), plan.steps.end(), [](const PlanStep& step) {
        return step.findsSomething() || step.isUnknown || step.pauseSeconds != 0;
    }));
    EXPECT_EQ(plan.sum(), Platform::TreeSize{});
    EXPECT_TRUE(plan.isComplete());
}

TEST_F(MakePlan, StopsAJobOnceAndPausesAfterADaemonOnly) {
    mac.files.add("/Library/LaunchDaemons/com.norvik.fileaccessd.plist");
    mac.addJob("system", "com.norvik.fileaccessd", "\tpid = 51\n");
    // Without its property list it is not stopped, so there is no pause.
    mac.addJob("system", "com.norvik.containmentd");
    mac.files.add("/Library/LaunchAgents/com.norvik.Agent.plist");
    mac.addJob("gui/501", "com.norvik.Agent");
    // A daemon's label among a user's jobs is not stopped by any step.
    mac.addJob("gui/501", "com.norvik.fileaccessd");
    const Plan plan = make();
    EXPECT_EQ(findings(plan),
              (Lines{"1: system/com.norvik.containmentd", "2: system/com.norvik.fileaccessd",
                     "5>2: system/com.norvik.fileaccessd", "6>1: system/com.norvik.containmentd",
                     "9: gui/501/com.norvik.Agent", "11>9: gui/501/com.norvik.Agent",
                     "13>9: gui/501/com.norvik.Agent", "15>9: gui/501/com.norvik.Agent",
                     "60: /Library/LaunchAgents/com.norvik.Agent.plist",
                     "62>60: /Library/LaunchAgents/com.norvik.Agent.plist",
                     "64>60: /Library/LaunchAgents/com.norvik.Agent.plist",
                     "66>60: /Library/LaunchAgents/com.norvik.Agent.plist",
                     "69: /Library/LaunchDaemons/com.norvik.fileaccessd.plist",
                     "72>69: /Library/LaunchDaemons/com.norvik.fileaccessd.plist"}));
    EXPECT_EQ(plan.steps[1].findings[0].pid, 51);
    EXPECT_EQ(plan.pauseSeconds(), 5U);
    EXPECT_EQ(plan.steps[1].pauseSeconds, 5U);
    EXPECT_TRUE(plan.steps[1].findsSomething());
    EXPECT_FALSE(plan.steps[4].findsSomething());
}

TEST_F(MakePlan, UnloadsTheExtensionOnce) {
    mac.extensions.loaded = {"com.norvik.kext.FileAccessFilter"};
    EXPECT_EQ(findings(make()),
              (Lines{"17: com.norvik.kext.FileAccessFilter", "18>17: com.norvik.kext.FileAccessFilter"}));
}

TEST_F(MakePlan, EndsProcessesByNameWhoseverTheyAre) {
    const std::string viewLogs = "/Applications/NORVIK/SNT/View Logs.app/Contents/MacOS/View Logs";
    mac.mac.processes.processes.push_back({7, 501, "View Logs", viewLogs});
    processes = {{7, 501, "View Logs", Base::URL::fileURL(viewLogs)},
                 {8, 502, "Software Update", Base::URL::fileURL("/System/Software Update")},
                 {9, 502, "Other", Base::URL::fileURL("/System/Other")}};
    const Plan plan = make();
    EXPECT_EQ(findings(plan), (Lines{"21: /System/Software Update", "22: " + viewLogs,
                                     "26>21: /System/Software Update", "27>22: " + viewLogs}));
    EXPECT_EQ(plan.steps[20].findings[0].pid, 8);
    EXPECT_EQ(plan.steps[20].findings[0].uid, 502U);
    EXPECT_FALSE(plan.steps[20].findings[0].isOfProduct);
    EXPECT_TRUE(plan.steps[21].findings[0].isOfProduct);
}

TEST_F(MakePlan, CountsEveryFileOnceWithTheStepThatTakesItAway) {
    mac.files.add(kConsole + "/Contents/MacOS/Sentrel", ItemKind::file, 100);
    mac.files.add("/Library/Application Support/NORVIK/SNT/FileAccessDaemon.bundle/x", ItemKind::file, 20);
    mac.files.add("/Library/Application Support/NORVIK/SNT/settings.plist", ItemKind::file, 3);
    mac.files.add("/Library/Application Support/NORVIK/other", ItemKind::file, 4000);
    const Plan plan = make();
    EXPECT_EQ(
        findings(plan),
        (Lines{"31: " + kConsole, "54: /Library/Application Support/NORVIK/SNT/FileAccessDaemon.bundle",
               "74: /Library/Application Support/NORVIK/SNT", "74: /Library/Application Support/NORVIK"}));
    EXPECT_EQ(plan.steps[30].findings[0].size, (Platform::TreeSize{1, 3, 0, 0, 100, 0}));
    EXPECT_EQ(plan.steps[53].findings[0].size, (Platform::TreeSize{1, 1, 0, 0, 20, 0}));
    EXPECT_EQ(plan.steps[73].findings[0].size, (Platform::TreeSize{1, 1, 0, 0, 3, 0}));
    EXPECT_EQ(plan.steps[73].findings[1].size, (Platform::TreeSize{1, 1, 0, 0, 4000, 0}));
    EXPECT_EQ(plan.sum(), (Platform::TreeSize{4, 6, 0, 0, 4123, 0}));
}

TEST_F(MakePlan, TakesRepairCopiesAlong) {
    const std::string repair = "/Library/Application Support/NORVIK/SNT/Repair";
    mac.files.add(kConsole, ItemKind::file, 1);
    mac.files.add(repair + kConsole, ItemKind::file, 20);
    mac.files.add(repair + "/other", ItemKind::file, 300);
    const Plan plan = make();
    EXPECT_EQ(findings(plan), (Lines{"31: " + kConsole, "31: " + repair + kConsole,
                                     "74: /Library/Application Support/NORVIK/SNT",
                                     "74: /Library/Application Support/NORVIK"}));
    EXPECT_EQ(plan.sum().bytes, 321U);
    EXPECT_EQ(plan.sum().files, 3U);
}

TEST_F(MakePlan, SaysOnceThatItMayNotLookAtRepairCopies) {
    const std::string repair = "/Library/Application Support/NORVIK/SNT/Repair";
    mac.files.failures[repair + kConsole] = {"one", EACCES};
    mac.files.failures[repair + "/Users/Shared/Norvik"] = {"two", EACCES};
    EXPECT_EQ(make().blind, Lines{"the repair copies in \"" + repair + "\" could not be looked at"});
}

TEST_F(MakePlan, FindsAnItemOnceUnderAllItsSpellings) {
    mac.files.add("/Applications/Norvik/View Logs.app", ItemKind::file, 7);
    mac.files.addSpelling("/Applications/NORVIK", "/Applications/Norvik");
    EXPECT_EQ(findings(make()), (Lines{"34: /Applications/Norvik/View Logs.app", "74: /Applications/Norvik",
                                       "74>74: /Applications/NORVIK"}));
}

TEST_F(MakePlan, KnowsThatAFolderOnTheWayGoesFirst) {
    mac.files.addFolder("/Library/Application Support/NORVIK/SNT/FileAccessDaemon/Agent.app");
    mac.files.addFolder("/Library/Application Support/NORVIK/SNT/FileAccessDaemon.bundle");
    mac.files.remove("/Library/Application Support/NORVIK/SNT/FileAccessDaemon.bundle");
    const Plan plan = make();
    EXPECT_EQ(findings(plan),
              (Lines{"50: /Library/Application Support/NORVIK/SNT/FileAccessDaemon/Agent.app",
                     "57: /Library/Application Support/NORVIK/SNT/FileAccessDaemon",
                     "74: /Library/Application Support/NORVIK/SNT", "74: /Library/Application Support/NORVIK",
                     "74>57: /Library/Application Support/NORVIK/SNT/FileAccessDaemon"}));
}

TEST_F(MakePlan, SaysOnceWhatItCouldNotLookAt) {
    mac.files.failures[kConsole] = {"console", EACCES};
    Plan plan = make();
    EXPECT_EQ(plan.inventory.blind, Lines{"console"});
    EXPECT_EQ(plan.blind, Lines{});
    EXPECT_FALSE(plan.isComplete());
    const auto before = Inventory::Inventory{};
    plan = Inspect::makePlan({before, {}, mac.files, [](const Platform::TreeSize&) {}});
    EXPECT_EQ(plan.blind, Lines{"console"});
    EXPECT_FALSE(plan.isComplete());
}

TEST_F(MakePlan, LeavesOutOfAFolderWhatOnlyARunningMacHas) {
    mac.files.addFolder(kConsole);
    const Plan plan = make("/Volumes/Disk");
    EXPECT_EQ(std::count_if(plan.steps.begin(), plan.steps.end(),
                            [](const PlanStep& step) { return step.isUnknown; }),
              30);
    EXPECT_TRUE(plan.steps[29].isUnknown);
    EXPECT_FALSE(plan.steps[30].isUnknown);
}

}  // namespace

}  // namespace InspectUnitTests
