#include "CommandTable.h"

#include <gtest/gtest.h>

#include "CommandJson.h"
#include "CommandKinds.h"

namespace {

using Base::URL;
using Inspect::commandTable;
using InstallCommon::CommandList;
using NorvikCommon::BundleInfo;
using NorvikCommon::KextInfo;
using NorvikCommon::LaunchdInfo;

/// A list with everything that a list may hold.
CommandList allCommands() {
    CommandList list;
    list.push_back(std::make_unique<InstallCommon::RemoveCommand>(
        "Deleting \u00e9...", std::vector<InstallCommon::RemoveCommand::Item>{
                                  {URL::fileURL("/a"), false}, {URL::fileURL("/b\x1b"), true}}));
    list.push_back(std::make_unique<InstallCommon::CopyCommand>(
        "Copying...",
        std::vector<InstallCommon::CopyCommand::Item>{{URL::fileURL("/from"), URL::fileURL("/to")},
                                                      {URL::fileURL("/c"), URL::fileURL("/d")}}));
    list.push_back(std::make_unique<InstallCommon::StartLaunchdJobCommand>(
        "Starting...", LaunchdInfo::launchdWithLabel("com.a", URL::fileURL("/a.plist")), true));
    list.push_back(
        std::make_unique<InstallCommon::StopLaunchdJobCommand>("Stopping...", LaunchdInfo(), false));
    list.push_back(std::make_unique<InstallCommon::KillProcessCommand>("Closing...", "one\ntwo"));
    list.push_back(std::make_unique<InstallCommon::UnloadKextCommand>(
        "Unloading...", KextInfo{BundleInfo::bundleWithPath(URL::fileURL("/E/a.kext"), "com.a"), "A"}));
    list.push_back(std::make_unique<InstallCommon::UnloadKextCommand>("Unloading...", KextInfo()));
    list.push_back(std::make_unique<InstallCommon::UnloadKextCommand>("Unloading...",
                                                                      KextInfo{BundleInfo(), std::nullopt}));
    list.push_back(std::make_unique<InstallCommon::UpdateLaunchServices>("Updating\x1b..."));
    for (int more = 0; more < 2; ++more) {
        list.push_back(std::make_unique<InstallCommon::RemoveCommand>("Nothing...", std::vector<URL>()));
    }
    return list;
}

const std::string kWideTable =
    " #  Class                   Description      Operands\n"
    " 1  RemoveCommand           Deleting \u00e9...    /a\n"
    "                                             /b\\x1b  (only if empty)\n"
    " 2  CopyCommand             Copying...       /from -> /to\n"
    "                                             /c -> /d\n"
    " 3  StartLaunchdJobCommand  Starting...      daemon com.a  /a.plist\n"
    " 4  StopLaunchdJobCommand   Stopping...      agent (none)  (none)\n"
    " 5  KillProcessCommand      Closing...       process one\\x0atwo\n"
    " 6  UnloadKextCommand       Unloading...     com.a  (I/O class A)\n"
    "                                             /E/a.kext\n"
    " 7  UnloadKextCommand       Unloading...     (none)  (I/O class (none))\n"
    "                                             (none)\n"
    " 8  UnloadKextCommand       Unloading...     (none)  (I/O class (none))\n"
    "                                             (none)\n"
    " 9  UpdateLaunchServices    Updating\\x1b...\n"
    "10  RemoveCommand           Nothing...\n"
    "11  RemoveCommand           Nothing...\n";

TEST(CommandTable, HasAColumnForTheOperandsIfItFits) {
    EXPECT_EQ(commandTable(allCommands(), 71), kWideTable);
    EXPECT_EQ(commandTable(allCommands(), 120), kWideTable);
}

TEST(CommandTable, HasTheOperandsBelowTheirCommandOtherwise) {
    EXPECT_EQ(commandTable(allCommands(), 70),
              " #  Class                   Description\n"
              "      Operands\n"
              " 1  RemoveCommand           Deleting \u00e9...\n"
              "      /a\n"
              "      /b\\x1b  (only if empty)\n"
              " 2  CopyCommand             Copying...\n"
              "      /from -> /to\n"
              "      /c -> /d\n"
              " 3  StartLaunchdJobCommand  Starting...\n"
              "      daemon com.a  /a.plist\n"
              " 4  StopLaunchdJobCommand   Stopping...\n"
              "      agent (none)  (none)\n"
              " 5  KillProcessCommand      Closing...\n"
              "      process one\\x0atwo\n"
              " 6  UnloadKextCommand       Unloading...\n"
              "      com.a  (I/O class A)\n"
              "      /E/a.kext\n"
              " 7  UnloadKextCommand       Unloading...\n"
              "      (none)  (I/O class (none))\n"
              "      (none)\n"
              " 8  UnloadKextCommand       Unloading...\n"
              "      (none)  (I/O class (none))\n"
              "      (none)\n"
              " 9  UpdateLaunchServices    Updating\\x1b...\n"
              "10  RemoveCommand           Nothing...\n"
              "11  RemoveCommand           Nothing...\n");
}

TEST(CommandTable, IsAsWideAsItsHeaderAtLeast) {
    CommandList list;
    EXPECT_EQ(commandTable(list, 33), "#  Class  Description  Operands\n");
    list.push_back(std::make_unique<InstallCommon::KillProcessCommand>("C", "a"));
    EXPECT_EQ(commandTable(list, 46),
              "#  Class               Description  Operands\n"
              "1  KillProcessCommand  C            process a\n");
    EXPECT_EQ(commandTable(list, 44),
              "#  Class               Description\n"
              "     Operands\n"
              "1  KillProcessCommand  C\n"
              "     process a\n");
}

TEST(CommandJson, HoldsEverything) {
    const Inspect::Json expected = Inspect::Json::parse(R"([
        {"number": 1, "class": "RemoveCommand", "runtimeName": "_TtC13InstallCommon13RemoveCommand",
         "description": "Deleting é...", "weight": 1,
         "items": [{"path": "/a", "removeIfEmpty": false}, {"path": "/b\u001b", "removeIfEmpty": true}]},
        {"number": 2, "class": "CopyCommand", "runtimeName": "_TtC13InstallCommon11CopyCommand",
         "description": "Copying...", "weight": 1,
         "items": [{"source": "/from", "destination": "/to"}, {"source": "/c", "destination": "/d"}]},
        {"number": 3, "class": "StartLaunchdJobCommand",
         "runtimeName": "_TtC13InstallCommon22StartLaunchdJobCommand", "description": "Starting...", "weight": 1,
         "launchdJob": {"label": "com.a", "plist": {"name": "a.plist", "location": "/a.plist"}},
         "isDaemon": true},
        {"number": 4, "class": "StopLaunchdJobCommand",
         "runtimeName": "_TtC13InstallCommon21StopLaunchdJobCommand", "description": "Stopping...", "weight": 1,
         "launchdJob": {"label": null, "plist": null}, "isDaemon": false},
        {"number": 5, "class": "KillProcessCommand", "runtimeName": "_TtC13InstallCommon18KillProcessCommand",
         "description": "Closing...", "weight": 1, "process": "one\ntwo"},
        {"number": 6, "class": "UnloadKextCommand", "runtimeName": "_TtC13InstallCommon17UnloadKextCommand",
         "description": "Unloading...", "weight": 1,
         "kext": {"bundle": {"name": "a.kext", "location": "/E/a.kext", "bundleId": "com.a"},
                  "ioClassName": "A"}},
        {"number": 7, "class": "UnloadKextCommand", "runtimeName": "_TtC13InstallCommon17UnloadKextCommand",
         "description": "Unloading...", "weight": 1, "kext": {"bundle": null, "ioClassName": null}},
        {"number": 8, "class": "UnloadKextCommand", "runtimeName": "_TtC13InstallCommon17UnloadKextCommand",
         "description": "Unloading...", "weight": 1,
         "kext": {"bundle": {"name": null, "location": null, "bundleId": null}, "ioClassName": null}},
        {"number": 9, "class": "UpdateLaunchServices",
         "runtimeName": "_TtC13InstallCommon20UpdateLaunchServices", "description": "Updating\u001b...",
         "weight": 1},
        {"number": 10, "class": "RemoveCommand", "runtimeName": "_TtC13InstallCommon13RemoveCommand",
         "description": "Nothing...", "weight": 1, "items": []},
        {"number": 11, "class": "RemoveCommand", "runtimeName": "_TtC13InstallCommon13RemoveCommand",
         "description": "Nothing...", "weight": 1, "items": []}])");
    EXPECT_EQ(Inspect::jsonText(Inspect::toJson(allCommands())), Inspect::jsonText(expected));
}

TEST(CommandKindDeathTest, EndsTheProcessForACommandThatNoListHas) {
    EXPECT_DEATH(static_cast<void>(Inspect::kindOf(InstallCommon::CommandConcrete("Base..."))),
                 "A command list holds a command of an unknown class\\.\n");
}

TEST(JsonText, IsIndentedAndValidWhateverAStringHolds) {
    EXPECT_EQ(Inspect::jsonText({{"z", "a\xFF"}, {"a", Inspect::Json::array({1, nullptr})}}),
              "{\n  \"z\": \"a\uFFFD\",\n  \"a\": [\n    1,\n    null\n  ]\n}\n");
}

}  // namespace
