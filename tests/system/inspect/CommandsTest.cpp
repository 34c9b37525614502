// sentrel-inspect commands: the contents of the lists, and their printed form.

#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "InspectRun.h"

namespace InspectTest {

namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Commands as they are numbered in a separate list.
nlohmann::json numbered(nlohmann::json commands) {
    for (std::size_t index = 0; index < commands.size(); ++index) {
        commands[index]["number"] = index + 1;
    }
    return commands;
}

TEST_F(Inspect, ListsTheCommandsOfEachSuite) {
    EXPECT_EQ(json({"commands", "uninstall", "--json"}).size(), 73U);
    EXPECT_EQ(json({"commands", "cleanup", "--json"}).size(), 2U);
    EXPECT_EQ(json({"commands", "uninstall-all", "--json"}).size(), 75U);
}

/// A command line for a list that uses the whole payload.
std::vector<std::string> withPayload(const std::string& list) {
    return {"commands",
            list,
            "--json",
            "--applications",
            "/Payload/Apps",
            "--launchd-jobs",
            "/Payload/Jobs",
            "--support-files",
            "/Payload/Support files"};
}

TEST_F(Inspect, ListsTheCommandsOfEachInstallationSuite) {
    EXPECT_EQ(json({"commands", "pre-install", "--json", "--support-files", "/P"}).size(), 2U);
    EXPECT_EQ(json(withPayload("install")).size(), 10U);
    EXPECT_EQ(json({"commands", "post-install", "--json"}).size(), 1U);
    EXPECT_EQ(json(withPayload("clean-install")).size(), 13U);
    EXPECT_EQ(json(withPayload("update")).size(), 84U);
    EXPECT_EQ(json(withPayload("over-install")).size(), 88U);
}

TEST_F(Inspect, ComposesTheInstallationListsOfTheSuites) {
    const auto pieces = [this](const std::vector<std::string>& names) {
        auto commands = nlohmann::json::array();
        for (const std::string& name : names) {
            std::vector<std::string> line{"commands", name, "--json"};
            if (name == "install") {
                line = withPayload(name);
            } else if (name == "pre-install") {
                line.insert(line.end(), {"--support-files", "/Payload/Support files"});
            }
            for (const auto& command : json(line)) {
                commands.push_back(command);
            }
        }
        return numbered(commands);
    };
    EXPECT_EQ(json(withPayload("clean-install")), pieces({"pre-install", "install", "post-install"}));
    EXPECT_EQ(json(withPayload("update")), pieces({"uninstall", "install", "post-install"}));
    EXPECT_EQ(json(withPayload("over-install")),
              pieces({"uninstall", "cleanup", "pre-install", "install", "post-install"}));
}

TEST_F(Inspect, CopiesEachPartFromItsFolderOfThePayload) {
    const auto commands = json(withPayload("clean-install"));
    std::vector<std::string> copies;
    for (const auto& command : commands) {
        if (command.at("class") == "CopyCommand") {
            ASSERT_EQ(command.at("items").size(), 1U);
            const auto& item = command.at("items").at(0);
            copies.push_back(item.at("source").get<std::string>() + " -> " +
                             item.at("destination").get<std::string>());
        }
    }
    const std::string data = "/Library/Application Support/NORVIK/SNT/";
    EXPECT_EQ(copies, (std::vector<std::string>{
                          "/Payload/Support files/settings.plist -> " + data + "settings.plist",
                          "/Payload/Support files/bases.nvb -> " + data + "bases.nvb",
                          "/Payload/Apps/Sentrel.app -> /Applications/Sentrel.app",
                          "/Payload/Jobs/com.norvik.containmentd.plist -> "
                          "/Library/LaunchDaemons/com.norvik.containmentd.plist",
                          "/Payload/Jobs/com.norvik.fileaccessd.plist -> "
                          "/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
                          "/Payload/Jobs/com.norvik.TrayMenu.plist -> "
                          "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
                          "/Payload/Jobs/com.norvik.NorvikAgent.plist -> "
                          "/Library/LaunchAgents/com.norvik.NorvikAgent.plist",
                          "/Payload/Support files/Scan with Sentrel.workflow -> "
                          "/Library/Services/Scan with Sentrel.workflow",
                      }));
    EXPECT_EQ(commands.at(12), nlohmann::json::parse(R"({
        "number": 13, "class": "UpdateLaunchServices", "runtimeName": "_TtC13InstallCommon20UpdateLaunchServices",
        "description": "Updating system databases...", "weight": 1})"));
}

TEST_F(Inspect, DecodesAnInstallationListToTheSameCommands) {
    std::vector<std::string> line = withPayload("over-install");
    const auto commands = json(line);
    line.erase(line.begin() + 2);
    line.insert(line.end(), {"--archive", "list.plist"});
    EXPECT_EQ(inspect(line).status, 0);
    EXPECT_EQ(json({"decode", "list.plist", "--json"}), commands);
}

TEST_F(Inspect, SendsTheCleanupSuiteBehindTheUninstallSuite) {
    auto expected = json({"commands", "uninstall", "--json"});
    for (const auto& command : json({"commands", "cleanup", "--json"})) {
        expected.push_back(command);
    }
    EXPECT_EQ(json({"commands", "uninstall-all", "--json"}), numbered(expected));
}

TEST_F(Inspect, DescribesTheCommandsInOrder) {
    const auto commands = json({"commands", "uninstall-all", "--json"});
    EXPECT_EQ(commands.at(0).at("description"), "Unloading daemon com.norvik.containmentd...");
    EXPECT_EQ(commands.at(16).at("description"), "Unloading KEXT FileAccessFilter.kext...");
    EXPECT_EQ(commands.at(18).at("description"), "Closing user application Sentrel...");
    EXPECT_EQ(commands.at(30).at("description"), "Deleting user application Sentrel.app...");
    EXPECT_EQ(commands.at(72).at("description"), "Deleting launchd job com.norvik.containmentd...");
    EXPECT_EQ(commands.at(74).at("description"), "Deleting auxiliary helper tools...");
}

TEST_F(Inspect, PrintsTheFieldsOfEachClassThatAnUninstallationUses) {
    const auto commands = json({"commands", "uninstall-all", "--json"});
    EXPECT_EQ(commands.at(0), nlohmann::json::parse(R"({
        "number": 1, "class": "StopLaunchdJobCommand", "runtimeName": "_TtC13InstallCommon21StopLaunchdJobCommand",
        "description": "Unloading daemon com.norvik.containmentd...", "weight": 1,
        "launchdJob": {"label": "com.norvik.containmentd",
                       "plist": {"name": "com.norvik.containmentd.plist",
                                 "location": "/Library/LaunchDaemons/com.norvik.containmentd.plist"}},
        "isDaemon": true})"));
    EXPECT_EQ(commands.at(6).at("isDaemon"), false);
    EXPECT_EQ(commands.at(16), nlohmann::json::parse(R"({
        "number": 17, "class": "UnloadKextCommand", "runtimeName": "_TtC13InstallCommon17UnloadKextCommand",
        "description": "Unloading KEXT FileAccessFilter.kext...", "weight": 1,
        "kext": {"bundle": {"name": "FileAccessFilter.kext",
                            "location": "/Library/Extensions/FileAccessFilter.kext",
                            "bundleId": "com.norvik.kext.FileAccessFilter"},
                 "ioClassName": "FileAccessFilter"}})"));
    EXPECT_EQ(commands.at(18), nlohmann::json::parse(R"({
        "number": 19, "class": "KillProcessCommand", "runtimeName": "_TtC13InstallCommon18KillProcessCommand",
        "description": "Closing user application Sentrel...", "weight": 1, "process": "Sentrel"})"));
    EXPECT_EQ(commands.at(30), nlohmann::json::parse(R"({
        "number": 31, "class": "RemoveCommand", "runtimeName": "_TtC13InstallCommon13RemoveCommand",
        "description": "Deleting user application Sentrel.app...", "weight": 1,
        "items": [{"path": "/Applications/Sentrel.app", "removeIfEmpty": false}]})"));
    EXPECT_EQ(commands.at(73).at("items").size(), 10U);
    EXPECT_EQ(commands.at(74).at("items").size(), 8U);
}

TEST_F(Inspect, PrintsATableThatFitsIntoAHundredAndTwentyColumns) {
    const Outcome outcome = inspect({"commands", "uninstall-all"});
    ASSERT_EQ(outcome.status, 0);
    const auto lines = linesOf(outcome.output);
    ASSERT_GT(lines.size(), 4U);
    EXPECT_EQ(lines[0], " #  Class                  Description");
    EXPECT_EQ(lines[1], "      Operands");
    EXPECT_EQ(lines[2], " 1  StopLaunchdJobCommand  Unloading daemon com.norvik.containmentd...");
    EXPECT_EQ(lines[3],
              "      daemon com.norvik.containmentd  /Library/LaunchDaemons/com.norvik.containmentd.plist");
    std::size_t rows = 0;
    for (const std::string& line : lines) {
        EXPECT_LE(line.size(), 120U) << line;
        EXPECT_FALSE(line.ends_with(' ')) << line;
        rows += line.find("...") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(rows, 75U);
}

TEST_F(Inspect, PutsTheOperandsIntoTheirOwnColumnWhereThereIsRoom) {
    ::setenv("COLUMNS", "200", 1);
    const Outcome outcome = inspect({"commands", "cleanup"});
    ::unsetenv("COLUMNS");
    ASSERT_EQ(outcome.status, 0);
    const auto lines = linesOf(outcome.output);
    ASSERT_EQ(lines.size(), 19U);
    EXPECT_EQ(lines[0], "#  Class          Description                                Operands");
    EXPECT_EQ(lines[1],
              "1  RemoveCommand  Deleting support files and directories...  "
              "/Library/Application Support/NORVIK/SNT");
    EXPECT_EQ(lines[2], std::string(61, ' ') + "/Users/Shared/Norvik");
}

TEST_F(Inspect, WritesTheSameArchiveToAFileAndToStandardOutput) {
    const Outcome written = inspect({"commands", "uninstall-all", "--archive", "list.plist"});
    EXPECT_EQ(written.status, 0);
    EXPECT_EQ(written.output + written.errors, "");
    const std::string archive = read("list.plist");
    EXPECT_EQ(archive.substr(0, 8), "bplist00");
    EXPECT_EQ(entries(), std::vector<std::string>{"list.plist"});
    EXPECT_EQ(inspect({"commands", "uninstall-all", "--archive", "-"}).output, archive);
}

TEST_F(Inspect, ReplacesAnOlderArchiveAndKeepsItsMode) {
    write("list.plist", "something older");
    ASSERT_EQ(::chmod(path("list.plist").c_str(), 0640), 0);
    EXPECT_EQ(inspect({"commands", "cleanup", "--archive", path("list.plist")}).status, 0);
    EXPECT_EQ(json({"decode", "list.plist", "--json"}).size(), 2U);
    struct stat after {};
    ASSERT_EQ(::stat(path("list.plist").c_str(), &after), 0);
    EXPECT_EQ(after.st_mode & 0777, 0640U);
}

TEST_F(Inspect, LeavesNothingBehindWhereTheArchiveCannotBePut) {
    expectRefusal(inspect({"commands", "cleanup", "--archive", "missing/list.plist"}), 1,
                  "missing/list.plist: ");
    std::filesystem::create_directory(path("folder"));
    expectRefusal(inspect({"commands", "cleanup", "--archive", "folder"}), 1, "folder: is a folder");
    std::filesystem::create_symlink("nowhere", path("link"));
    expectRefusal(inspect({"commands", "cleanup", "--archive", "link"}), 1, "is not a regular file");
    expectRefusal(inspect({"commands", "cleanup", "--archive", ""}), 1, "\"\": names no file");
    expectRefusal(inspect({"commands", "cleanup", "--archive", "/dev/full"}), 1, "is not a regular file");
    EXPECT_EQ(entries(), (std::vector<std::string>{"folder", "link"}));
    EXPECT_TRUE(std::filesystem::is_empty(path("folder")));
}

TEST_F(Inspect, KeepsTheOlderArchiveWhenTheNewOneCannotBeWrittenWhole) {
    write("list.plist", "something older");
    expectRefusal(inspectUnder({.largestFile = 4096}, {"commands", "uninstall", "--archive", "list.plist"}),
                  1, "list.plist: ");
    EXPECT_EQ(read("list.plist"), "something older");
    EXPECT_EQ(entries(), std::vector<std::string>{"list.plist"});
}

TEST_F(Inspect, SaysWhenStandardOutputTakesNoMore) {
    expectRefusal(inspectUnder({.output = "/dev/full"}, {"commands", "uninstall", "--json"}), 1,
                  "standard output: No space left on device");
}

}  // namespace

}  // namespace InspectTest
