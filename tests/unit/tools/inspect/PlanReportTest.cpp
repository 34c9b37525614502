#include "Plan.h"

#include <gtest/gtest.h>

#include "InspectedMac.h"
#include "PlanReport.h"

namespace InspectUnitTests {

namespace {

using Inspect::Plan;
using Inspect::PlanFinding;
using Platform::ItemKind;
using Kind = PlanFinding::Kind;

/// Two steps that find something and one that does not.
Plan smallPlan() {
    Plan plan;
    plan.inventory.notLookedAt = {"launchd overrides in gui/501"};
    plan.inventory.blind = {"one"};
    plan.blind = {"two"};
    PlanFinding job{Kind::job, "system/com.norvik.fileaccessd"};
    job.pid = 51;
    PlanFinding idle{Kind::job, "gui/501/com.norvik.Agent"};
    PlanFinding extension{Kind::extension, "com.norvik.kext"};
    PlanFinding process{Kind::process, "/System/Software Update"};
    process.pid = 8;
    process.uid = 502;
    process.isOfProduct = false;
    PlanFinding own{Kind::process, kConsole + "/x"};
    own.pid = 9;
    own.uid = 0;
    own.isOfProduct = true;
    PlanFinding folder{Kind::item, kConsole};
    folder.itemKind = ItemKind::folder;
    folder.size = {2, 3, 0, 0, 1500, 1};
    PlanFinding file{Kind::item, "/file"};
    file.size = {1, 0, 0, 0, 12, 0};
    PlanFinding link{Kind::item, "/link"};
    link.itemKind = ItemKind::link;
    link.size = {0, 0, 1, 0, 0, 0};
    PlanFinding again{Kind::item, "/again"};
    again.goesWithStep = 2;
    plan.steps = {{1, "StopLaunchdJobCommand", "Unloading...", {job, idle, extension}, false, 5},
                  {2, "RemoveCommand", "Deleting...", {process, own, folder, file, link, again}, false, 0},
                  {3, "RemoveCommand", "Nothing...", {}, false, 0},
                  {4, "RemoveCommand", "Again...", {again}, false, 0},
                  {15, "KillProcessCommand", "Unknown...", {}, true, 0}};
    return plan;
}

TEST(PlanReport, ShowsTheStepsThatFindSomething) {
    EXPECT_EQ(planText(smallPlan(), false),
              " 1  Unloading...\n"
              "      job system/com.norvik.fileaccessd, running as process 51\n"
              "      job gui/501/com.norvik.Agent, not running\n"
              "      com.norvik.kext, loaded\n"
              "      then a pause of 5 s\n"
              " 2  Deleting...\n"
              "      process 8 of user 502, /System/Software Update (not the product's)\n"
              "      process 9 of user 0, /Applications/Sentrel.app/x\n"
              "      /Applications/Sentrel.app  (at least 1.5 kB in 2 files)\n"
              "      /file  (12 B)\n"
              "      /link  (link)\n"
              "      /again, gone with step 2\n"
              "2 of 5 steps find something: at least 1.5 kB in 3 files.\n"
              "It takes a few seconds, and 5 s of pauses after stopped daemons.\n"
              "Not looked at: launchd overrides in gui/501\n"
              "Could not look: one\n"
              "Could not look: two\n");
}

TEST(PlanReport, KeepsWithinTheWidth) {
    const std::string text = planText(smallPlan(), false, 50);
    EXPECT_NE(text.find("      process 8 of user 502, /System/Software\n"
                        "          Update (not the product's)\n"),
              std::string::npos)
        << text;
}

TEST(PlanReport, ShowsAllSteps) {
    Plan plan = smallPlan();
    plan.steps.erase(plan.steps.begin(), plan.steps.begin() + 2);
    plan.inventory = {};
    plan.blind.clear();
    EXPECT_EQ(planText(plan, true),
              " 3  Nothing...\n"
              "      nothing\n"
              " 4  Again...\n"
              "      /again, gone with step 2\n"
              "15  Unknown...\n"
              "      not looked at\n"
              "0 of 3 steps find something: 0 B in 0 files.\n"
              "It takes a few seconds.\n");
}

TEST(PlanReport, HoldsEverythingInJson) {
    const Inspect::Json expected = Inspect::Json::parse(R"({
        "formatVersion": 1,
        "root": null,
        "steps": [
            {"number": 1, "class": "StopLaunchdJobCommand", "description": "Unloading...", "isLookedAt": true,
             "pauseSeconds": 5, "finds": [
                {"job": "system/com.norvik.fileaccessd", "pid": 51, "goneWithStep": null},
                {"job": "gui/501/com.norvik.Agent", "pid": null, "goneWithStep": null},
                {"loadedExtension": "com.norvik.kext", "goneWithStep": null}]},
            {"number": 2, "class": "RemoveCommand", "description": "Deleting...", "isLookedAt": true,
             "pauseSeconds": 0, "finds": [
                {"process": "/System/Software Update", "pid": 8, "uid": 502, "isOfProduct": false,
                 "goneWithStep": null},
                {"process": "/Applications/Sentrel.app/x", "pid": 9, "uid": 0, "isOfProduct": true,
                 "goneWithStep": null},
                {"item": "/Applications/Sentrel.app", "kind": "folder", "bytes": 1500, "files": 2,
                 "isComplete": false, "goneWithStep": null},
                {"item": "/file", "kind": "file", "bytes": 12, "files": 1, "isComplete": true,
                 "goneWithStep": null},
                {"item": "/link", "kind": "link", "bytes": 0, "files": 0, "isComplete": true,
                 "goneWithStep": null},
                {"item": "/again", "kind": "file", "bytes": 0, "files": 0, "isComplete": true,
                 "goneWithStep": 2}]}],
        "stepCount": 5,
        "stepsThatFindSomething": 2,
        "bytes": 1512,
        "files": 3,
        "isComplete": false,
        "pauseSeconds": 5,
        "notLookedAt": ["launchd overrides in gui/501"],
        "couldNotLook": ["one", "two"]})");
    EXPECT_EQ(Inspect::jsonText(planJson(smallPlan(), false)), Inspect::jsonText(expected));
    const Inspect::Json all = planJson(smallPlan(), true);
    EXPECT_EQ(all.at("steps").size(), 5U);
    EXPECT_EQ(all.at("steps").at(4).at("isLookedAt"), false);
    Plan onDisk = smallPlan();
    onDisk.inventory.root = "/Volumes/Disk";
    EXPECT_EQ(planJson(onDisk, true).at("root"), "/Volumes/Disk");
}

}  // namespace

}  // namespace InspectUnitTests
