// sentrel-inspect decode: archives that the helper takes.

#include "ForgedArchive.h"
#include "InspectRun.h"
#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"

namespace InspectTest {

namespace {

using Base::Coder;
using Base::URL;
using InstallCommon::KillProcessCommand;
using InstallCommon::RemoveCommand;

TEST_F(Inspect, DecodesItsOwnArchives) {
    for (const char* list : {"uninstall", "cleanup", "uninstall-all"}) {
        ASSERT_EQ(inspect({"commands", list, "--archive", "list.plist"}).status, 0);
        for (const bool asJson : {false, true}) {
            std::vector<std::string> shown{"commands", list};
            std::vector<std::string> decoded{"decode", "list.plist"};
            if (asJson) {
                shown.emplace_back("--json");
                decoded.emplace_back("--json");
            }
            const Outcome outcome = inspect(decoded);
            EXPECT_EQ(outcome.status, 0);
            EXPECT_EQ(outcome.errors, "");
            EXPECT_FALSE(outcome.output.empty());
            EXPECT_EQ(outcome.output, inspect(shown).output);
        }
    }
}

TEST_F(Inspect, DecodesTheXMLFormToo) {
    const std::string xml = xmlForm(inspect({"commands", "uninstall-all", "--archive", "-"}).output);
    ASSERT_NE(xml.find("<key>CF$UID</key>"), std::string::npos);
    const std::string expected = inspect({"commands", "uninstall-all", "--json"}).output;
    write("list.xml", xml);
    EXPECT_EQ(inspect({"decode", "list.xml", "--json"}).output, expected);
    write("marked.xml", "\xEF\xBB\xBF" + xml);
    EXPECT_EQ(inspect({"decode", "marked.xml", "--json"}).output, expected);
    std::string commented = xml;
    commented.insert(commented.find("<dict>"), "<!-- <array> > -- ]]> -->");
    EXPECT_EQ(inspect({"decode", "-", "--json"}, commented).output, expected);
}

TEST_F(Inspect, DecodesAnXMLFormWithSectionsOfPlainTextAndAttributes) {
    std::string xml = xmlForm(archiveOf(KillProcessCommand("a & b < c > d", "p")));
    const std::size_t begin = xml.find("<string>a &amp; b &lt; c ");
    ASSERT_NE(begin, std::string::npos) << xml;
    const std::string end = "</string>";
    xml.replace(begin, xml.find(end, begin) + end.size() - begin,
                R"(<string note="1 > 2" other='"/>' ><![CDATA[a & b < c > d]]></string>)");
    const std::string open = "<dict>";
    xml.insert(xml.find(open) + open.size(),
               R"(<key>x</key><array note="a/" /><key>y</key><array note="/"></array>)");
    EXPECT_EQ(json({"decode", "-", "--json"}, xml).at(0).at("description"), "a & b < c > d");
}

TEST_F(Inspect, DecodesStandardInput) {
    const std::string archive = inspect({"commands", "cleanup", "--archive", "-"}).output;
    EXPECT_EQ(inspect({"decode", "-"}, archive).output, inspect({"commands", "cleanup"}).output);
}

TEST_F(Inspect, DecodesAnEmptyList) {
    const std::string archive = archiveOf(std::vector<const Base::CodedObject*>{});
    EXPECT_EQ(json({"decode", "-", "--json"}, archive), nlohmann::json::array());
    EXPECT_EQ(inspect({"decode", "-"}, archive).output, "#  Class  Description  Operands\n");
}

TEST_F(Inspect, PrintsTheFieldsOfEachClassThatAnInstallationUses) {
    const InstallCommon::CopyCommand copy("Copying...", URL::fileURL("/from here"), URL::fileURL("/to"));
    const auto start = InstallCommon::StartLaunchdJobCommand::withAgent(
        "Starting...", NorvikCommon::LaunchdInfo::launchdWithLabel("label", URL::fileURL("/p/label.plist")));
    const InstallCommon::UpdateLaunchServices update("Updating...");
    const std::string archive = archiveOf({&copy, start.get(), &update});
    EXPECT_EQ(json({"decode", "-", "--json"}, archive), nlohmann::json::parse(R"([
        {"number": 1, "class": "CopyCommand", "runtimeName": "_TtC13InstallCommon11CopyCommand", "description": "Copying...",
         "weight": 1, "items": [{"source": "/from here", "destination": "/to"}]},
        {"number": 2, "class": "StartLaunchdJobCommand", "runtimeName": "_TtC13InstallCommon22StartLaunchdJobCommand",
         "description": "Starting...", "weight": 1,
         "launchdJob": {"label": "label", "plist": {"name": "label.plist", "location": "/p/label.plist"}},
         "isDaemon": false},
        {"number": 3, "class": "UpdateLaunchServices", "runtimeName": "_TtC13InstallCommon20UpdateLaunchServices",
         "description": "Updating...", "weight": 1}])"));
    const Outcome table = inspect({"decode", "-"}, archive);
    EXPECT_EQ(table.output,
              "#  Class                   Description  Operands\n"
              "1  CopyCommand             Copying...   /from here -> /to\n"
              "2  StartLaunchdJobCommand  Starting...  agent label  /p/label.plist\n"
              "3  UpdateLaunchServices    Updating...\n");
}

TEST_F(Inspect, PrintsNullForAPropertyWhoseKeyIsMissing) {
    const Forged job(NorvikCommon::LaunchdInfo::codedClass());
    const Forged bundle(NorvikCommon::BundleInfo::codedClass(),
                        [](Coder& coder) { coder.encodeString("name", "x.kext"); });
    const Forged kext(NorvikCommon::KextInfo::codedClass(),
                      [&bundle](Coder& coder) { coder.encodeObject("bundle", bundle); });
    const Forged stop(InstallCommon::StopLaunchdJobCommand::staticClass(), [&job](Coder& coder) {
        coder.encodeObject("agent", job);
        coder.encodeBool("isDaemon", true);
        coder.encodeString("commandDescription", "Stopping...");
    });
    const Forged unload(InstallCommon::UnloadKextCommand::staticClass(), [&kext](Coder& coder) {
        coder.encodeObject("kext", kext);
        coder.encodeString("commandDescription", "Unloading...");
    });
    const std::string archive = archiveOf({&stop, &unload});
    const auto commands = json({"decode", "-", "--json"}, archive);
    EXPECT_EQ(commands.at(0).at("launchdJob"), nlohmann::json::parse(R"({"label": null, "plist": null})"));
    EXPECT_EQ(commands.at(1).at("kext"), nlohmann::json::parse(R"({
        "bundle": {"name": "x.kext", "location": null, "bundleId": null}, "ioClassName": null})"));
    const Outcome table = inspect({"decode", "-"}, archive);
    EXPECT_NE(table.output.find("  daemon (none)  (none)\n"), std::string::npos) << table.output;
    EXPECT_NE(table.output.find("  (none)  (I/O class (none))\n"), std::string::npos) << table.output;
}

TEST_F(Inspect, PairsThreePathsAndTwoFlagsToTwoItems) {
    const Forged remove(RemoveCommand::staticClass(), [](Coder& coder) {
        coder.encodeURLs("source", std::vector{URL::fileURL("/a"), URL::fileURL("/b"), URL::fileURL("/c")});
        coder.encodeBools("destination", {true, false});
        coder.encodeString("commandDescription", "Deleting...");
    });
    const auto commands = json({"decode", "-", "--json"}, archiveOf(remove));
    EXPECT_EQ(commands.at(0).at("items"), nlohmann::json::parse(R"([{"path": "/a", "removeIfEmpty": true},
                                                                    {"path": "/b", "removeIfEmpty": false}])"));
    const Outcome table = inspect({"decode", "-"}, archiveOf(remove));
    EXPECT_NE(table.output.find("  /a  (only if empty)\n"), std::string::npos) << table.output;
}

TEST_F(Inspect, PrintsAReportedWeightOfOneWhateverTheSenderHadSet) {
    KillProcessCommand command("Closing...", "Sentrel");
    command.setWeight(5);
    EXPECT_EQ(json({"decode", "-", "--json"}, archiveOf(command)).at(0).at("weight"), 1);
}

TEST_F(Inspect, PrintsValidUTF8WhateverAPathHolds) {
    const RemoveCommand command("Deleting \xC3\xA9...", URL::fileURL("/bad \xFF\xC3 \xE2\x98\x83"));
    const Outcome outcome = inspect({"decode", "-", "--json"}, archiveOf(command));
    EXPECT_EQ(outcome.status, 0);
    const auto commands = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(commands.at(0).at("description"), "Deleting \xC3\xA9...");
    EXPECT_EQ(commands.at(0).at("items").at(0).at("path"), "/bad \xEF\xBF\xBD\xEF\xBF\xBD \xE2\x98\x83");
    const Outcome table = inspect({"decode", "-"}, archiveOf(command));
    EXPECT_NE(table.output.find("  /bad \\xff\\xc3 \xE2\x98\x83\n"), std::string::npos) << table.output;
}

TEST_F(Inspect, LetsNothingInAnArchiveLeaveItsLine) {
    const KillProcessCommand command("one\ntwo\t\x1b[31m\xE2\x80\xAE", "a\\b\r\x7f\xC2\x9B");
    const Outcome table = inspect({"decode", "-"}, archiveOf(command));
    EXPECT_EQ(table.output,
              "#  Class               Description                         Operands\n"
              "1  KillProcessCommand  one\\x0atwo\\x09\\x1b[31m\\xe2\\x80\\xae  process "
              "a\\b\\x0d\\x7f\\xc2\\x9b\n");
    EXPECT_EQ(json({"decode", "-", "--json"}, archiveOf(command)).at(0).at("process"), "a\\b\r\x7f\xC2\x9B");
}

}  // namespace

}  // namespace InspectTest
