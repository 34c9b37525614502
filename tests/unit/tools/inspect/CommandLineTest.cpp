#include "CommandLine.h"

#include <gtest/gtest.h>

#include <array>

#include "CommandLists.h"
#include "Definitions.h"
#include "HelpText.h"

namespace {

using Inspect::Request;
using Arguments = std::vector<const char*>;

Request request(Arguments arguments) {
    arguments.insert(arguments.begin(), "sentrel-inspect");
    return Inspect::readCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

/// Why the command line is invalid.
std::string misuse(const Arguments& arguments) {
    const Request read = request(arguments);
    EXPECT_EQ(read.answer, "");
    EXPECT_EQ(static_cast<bool>(read.run), read.misuse.empty());
    return read.misuse;
}

std::string answer(const Arguments& arguments) {
    const Request read = request(arguments);
    EXPECT_EQ(read.misuse, "");
    EXPECT_FALSE(read.run);
    return read.answer;
}

TEST(CommandLine, NamesTheCommandThatIsToRun) {
    for (const char* command : {"scan", "plan", "verify", "explain", "catalogue"}) {
        EXPECT_EQ(misuse({command, "--json"}), "") << command;
    }
    EXPECT_EQ(misuse({"find", "x"}), "");
    EXPECT_EQ(misuse({"decode", "x"}), "");
    for (const std::string& list : Inspect::commandListNameList()) {
        EXPECT_EQ(misuse({"commands", list.c_str()}), "") << list;
    }
}

TEST(CommandLine, RefusesWhatIsNoCommand) {
    EXPECT_EQ(misuse({}), "a command is required; sentrel-inspect --help names them");
    EXPECT_EQ(misuse({"bogus"}), "\"bogus\" is not a command");
    EXPECT_EQ(misuse({"bo\ngus"}), "\"bo\\x0agus\" is not a command");
    EXPECT_EQ(misuse({"scna"}), "\"scna\" is not a command: did you mean scan?");
    EXPECT_EQ(misuse({"--vresion"}), "--vresion is not an option: did you mean --version?");
    EXPECT_EQ(misuse({"--hepl"}), "--hepl is not an option: did you mean --help?");
    EXPECT_EQ(misuse({"--jsno"}), "--jsno is not an option");
}

TEST(CommandLine, RefusesACommandsOptionBeforeTheCommand) {
    EXPECT_EQ(misuse({"--json", "scan"}), "--json is not an option");
    EXPECT_EQ(misuse({"bogus", "scan"}), "\"bogus\" is not a command");
    // What is wrong behind the command comes first.
    EXPECT_EQ(misuse({"--json", "scan", "--jsno"}), "--jsno is not an option of scan: did you mean --json?");
}

TEST(CommandLine, RefusesWhatACommandDoesNotTake) {
    EXPECT_EQ(misuse({"scan", "--jsno"}), "--jsno is not an option of scan: did you mean --json?");
    EXPECT_EQ(misuse({"scan", "--hepl"}), "--hepl is not an option of scan: did you mean --help?");
    EXPECT_EQ(misuse({"scan", "--versio"}), "--versio is not an option of scan");
    EXPECT_EQ(misuse({"verify", "--wiat=5"}), "--wiat is not an option of verify: did you mean --wait?");
    EXPECT_EQ(misuse({"verify", "--wiat=a=b"}), "--wiat is not an option of verify: did you mean --wait?");
    EXPECT_EQ(misuse({"plan", "extra"}), "\"extra\" is one word too many for plan");
    EXPECT_EQ(misuse({"scan", "plan"}), "\"plan\" is one word too many for scan");
    EXPECT_EQ(misuse({"find", "one", "two"}), "\"two\" is one word too many for find");
    EXPECT_EQ(misuse({"scan", "--json", "--plain"}), "--json excludes --plain");
    EXPECT_EQ(misuse({"find"}), "WHAT is required");
}

TEST(CommandLine, RefusesOptionsThatExcludeEachOther) {
    const std::vector<std::array<const char*, 4>> excluded{{"scan", "--removal-lines", "--json"},
                                                           {"scan", "--plain", "--json"},
                                                           {"scan", "--plain", "--removal-lines"},
                                                           {"explain", "--all", "--json"},
                                                           {"explain", "--follow", "--json"}};
    for (const auto& [command, one, other, end] : excluded) {
        EXPECT_EQ(misuse({command, one, other}), std::string(other) + " excludes " + one);
    }
    EXPECT_EQ(misuse({"verify", "--wait", "1", "--root", "/"}), "--root excludes --wait");
    EXPECT_EQ(misuse({"commands", "cleanup", "--archive", "-", "--json"}), "--json excludes --archive");
    EXPECT_EQ(misuse({"explain", "--html", "-", "--json", "x"}), "");
    EXPECT_EQ(misuse({"plan", "--all", "--json", "--root", "/"}), "");
}

TEST(CommandLine, RefusesAListThatDoesNotExist) {
    const std::string all =
        "uninstall, cleanup, uninstall-all, pre-install, install, post-install, clean-install, update, "
        "over-install";
    EXPECT_EQ(misuse({"commands", "everything"}), "\"everything\" is not one of " + all);
    EXPECT_EQ(misuse({"commands", "unistall"}),
              "\"unistall\" is not one of " + all + ": did you mean uninstall?");
}

TEST(CommandLine, AnswersWithTheVersion) {
    EXPECT_EQ(answer({"--version"}), "sentrel-inspect " SENTREL_VERSION " (" SENTREL_BUILD ")\n");
}

TEST(CommandLine, AnswersWithTheHelpOfTheProgram) {
    const std::string help = answer({"--help"});
    EXPECT_TRUE(
        help.starts_with("Shows what is on a Mac of Sentrel, what an uninstallation or installation "
                         "does, and what was sent.\nChanges nothing.\n"))
        << help;
    for (const auto& command : Inspect::commandDefinitions()) {
        const std::string line = "\n  " + std::string(command.name) + ' ';
        ASSERT_NE(help.find(line), std::string::npos) << help;
    }
    EXPECT_NE(help.find("Shows which parts of the product are on this Mac.\n"), std::string::npos) << help;
    EXPECT_NE(help.find("\n\n" + Inspect::programEpilogue() + "\n"), std::string::npos) << help;
}

TEST(CommandLine, AnswersWithTheHelpOfACommand) {
    for (const auto& command : Inspect::commandDefinitions()) {
        const std::string help = answer({std::string(command.name).c_str(), "--help"});
        EXPECT_NE(help.find("\n\n" + Inspect::helpEpilogue(command) + "\n"), std::string::npos) << help;
        for (const auto& option : command.options) {
            const std::string line = "\n  " + std::string(option.name) + ' ' + std::string(option.value);
            EXPECT_NE(help.find(line), std::string::npos) << line << help;
        }
    }
}

TEST(CommandLine, WrapsTheExplanationsInItsHelp) {
    const std::string help = answer({"find", "--help"});
    EXPECT_NE(help.find(" an absolute path, a launchd label, a process's name or a bundle\n"),
              std::string::npos)
        << help;
    EXPECT_NE(help.find("  identifier\n\nOptions:\n"), std::string::npos) << help;
    EXPECT_NE(help.find("\n  WHAT REQUIRED  "), std::string::npos) << help;
}

TEST(CommandLists, AreFoundByName) {
    EXPECT_EQ(Inspect::findCommandList("nothing"), nullptr);
    EXPECT_EQ(Inspect::findCommandList(""), nullptr);
    for (const std::string& name : Inspect::commandListNameList()) {
        ASSERT_NE(Inspect::findCommandList(name), nullptr) << name;
        EXPECT_EQ(Inspect::findCommandList(name)->name, name);
    }
}

TEST(CommandLists, AreDescribedInLines) {
    EXPECT_EQ(Inspect::describeCommandLists(),
              "Lists:\n"
              "  uninstall       stops, unloads, closes and deletes every component\n"
              "  cleanup         deletes the data folders and the helper tools\n"
              "  uninstall-all   both, as an uninstallation sends them\n"
              "  pre-install     copies the settings and the AV bases\n"
              "  install         copies the product, starts its agents and daemons\n"
              "  post-install    updates the Launch Services database\n"
              "  clean-install   pre-install, install, post-install\n"
              "  update          uninstall, install, post-install: the data stays\n"
              "  over-install    uninstall-all, then a clean install");
}

}  // namespace
