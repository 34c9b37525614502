#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include <unistd.h>

#include <gtest/gtest.h>

#include "support/SimulatedMac.h"

namespace {

namespace fs = std::filesystem;
using TestSupport::ProgramResult;
using TestSupport::runProgram;
using TestSupport::SimulatedMac;

ProgramResult macsim(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), SimulatedMac::macsim());
    return runProgram(arguments);
}

void expectOneLine(const std::string& text) {
    EXPECT_TRUE(text.starts_with("macsim: ")) << text;
    EXPECT_EQ(text.find('\n'), text.size() - 1) << text;
}

TEST(MacsimCommandLine, AnswersMisuseWithOneLineAndStatusTwo) {
    const SimulatedMac scratch;
    const std::string folder = scratch.path();
    const std::vector<std::vector<std::string>> misuses{
        {},
        {"no-such-command"},
        {"create"},
        {"create", folder, "--installed", "no-such-generation"},
        {"create", folder, "--version", "6.3"},
        {"create", folder, "--users", "alice"},
        {"create", folder, "--users", "alice:501,bob:501"},
        {"create", folder, "--users", "../x:501"},
        {"create", folder, "--users", "alice:0"},
        {"create", folder, "--size", "huge"},
        {"create", folder, "--other-antivirus", "a/b"},
        {"create", folder, "--empty", "--installed", "antivir"},
        {"create", folder, "--running", "Sentrel"},
        {"run", folder},
        {"run", folder, "--fault", "no-such-fault", "--", "true"},
        {"run", folder, "--fault", "helper-exit-after", "--", "true"},
        {"run", folder, "--fault", "helper-exit-after=0", "--", "true"},
        {"run", folder, "--fault", "helper-exit-after=x", "--", "true"},
        {"run", folder, "--fault", "kext-busy=1", "--", "true"},
        {"run", folder, "--fault", "immutable=relative", "--", "true"},
        {"run", folder, "--fault", "launchctl-hang=-1", "--", "true"},
        {"run", folder, "--fault", "launchctl-fail=unload", "--", "true"},
        {"run", folder, "--wait", "-1", "--", "true"},
        {"run", folder, "--wait", "soon", "--", "true"},
        {"create", folder, "--uninstaller", folder, "--without-uninstaller"},
        {"payload"},
        {"payload", folder, "--version", "6.4"},
        {"payload", folder, "--version", "/640"},
        {"payload", folder, "--size", "huge"},
        {"install"},
        {"install", folder},
        {"install", folder, "--payload", folder, "--fault", "no-such-fault"},
        {"install", folder, "--payload", folder, "--timeout", "0"},
        {"install", folder, "--payload", folder, "true"}};
    for (const auto& arguments : misuses) {
        const ProgramResult result = macsim(arguments);
        EXPECT_EQ(result.status, 2) << ::testing::PrintToString(arguments);
        EXPECT_EQ(result.out, "");
        expectOneLine(result.err);
    }
    EXPECT_TRUE(fs::is_empty(scratch.scratch())) << "something was left half-made";
}

TEST(MacsimCommandLine, NamesTheWordThatItDoesNotKnowAndTheOneThatWasMeant) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"crate"}, "'crate' is not a command: did you mean create?"},
        {{"frobnicate", "Mac"}, "'frobnicate' is not a command"},
        {{"--versoin"}, "'--versoin' is not an option: did you mean --version?"},
        {{"create", "--instaled=current"},
         "'--instaled' is not an option of create: did you mean --installed?"},
        {{"run", "Mac", "--fualt", "kext-busy", "--", "true"},
         "'--fualt' is not an option of run: did you mean --fault?"},
        {{"run", "Mac", "--fualt=kext-busy", "--", "true"},
         "'--fualt' is not an option of run: did you mean --fault?"},
        {{"state", "Mac", "again"}, "'again' is one word too many for state"},
        {{"create", "Mac", "--users", "alice:501,alice:502"}, "there are two users named 'alice'"},
        {{"create", "Mac", "--users", "alice:501,bob:501"}, "there are two users with the id 501"},
        {{"run", "Mac", "--fault", "launchctl-fail=unload", "--", "true"},
         "fault launchctl-fail needs a verb of launchctl: bootout, bootstrap, disable, enable, kickstart, "
         "kill, list, print, print-disabled, remove"}};
    for (const auto& [arguments, line] : cases) {
        const ProgramResult result = macsim(arguments);
        EXPECT_EQ(result.status, 2) << line;
        EXPECT_EQ(result.err, "macsim: " + line + "\n");
    }
}

TEST(MacsimCommandLine, HelpListsGenerationsAndFaults) {
    const std::string create = macsim({"create", "--help"}).out;
    std::istringstream generations(macsim({"list-generations"}).out);
    int count = 0;
    for (std::string name; generations >> name; ++count) {
        EXPECT_NE(create.find(" " + name), std::string::npos) << name;
    }
    EXPECT_EQ(count, 7);
    const std::string faults = macsim({"list-faults"}).out;
    for (const char* command : {"run", "install"}) {
        const std::string help = macsim({command, "--help"}).out;
        std::istringstream lines(faults);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_NE(help.find("\n  " + line + "\n"), std::string::npos) << command << ": " << line;
        }
    }
}

TEST(MacsimCommandLine, SaysItsVersion) {
    const ProgramResult result = macsim({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(std::regex_match(result.out, std::regex("macsim [0-9]+\\.[0-9]+\\.[0-9]+\n"))) << result.out;
}

TEST(MacsimCommandLine, FailsWhenItsOutputCannotBeWritten) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create().status, 0);
    ASSERT_EQ(mac.shell("logger something").status, 0);
    for (const char* command :
         {"log \"$1\"", "state \"$1\"", "state --json \"$1\"", "list-faults", "run --help"}) {
        const ProgramResult result =
            runProgram({"/bin/sh", "-c", "\"$0\" " + std::string(command) + " >/dev/full",
                        SimulatedMac::macsim(), mac.path()});
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_EQ(result.err, "macsim: cannot write to standard output: No space left on device\n")
            << command;
    }
}

TEST(MacsimCommandLine, SaysThatAnotherUsersMacIsForbidden) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create().status, 0);
    for (const char* mode : {"700", "755"}) {
        // In a folder that is closed, and in one that is open but whose description is root's alone.
        ASSERT_EQ(runProgram({"chmod", mode, mac.scratch()}).status, 0);
        std::vector<std::string> command{SimulatedMac::macsim(), "state", mac.path()};
        if (::geteuid() == 0) {
            command.insert(command.begin(), {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
        } else {
            ASSERT_EQ(runProgram({"chmod", "000", mac.path("/var/macsim")}).status, 0);
        }
        const ProgramResult result = runProgram(command);
        static_cast<void>(runProgram({"chmod", "755", mac.path("/var/macsim")}));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "macsim: " + mac.path() + ": Permission denied\n") << mode;
    }
}

TEST(MacsimCommandLine, RefusesAnUninstallerThatIsNotABundle) {
    SimulatedMac mac;
    const std::string folder = mac.scratch() + "/Odd.app";
    fs::create_directories(folder + "/Contents/MacOS");
    std::ofstream(folder + "/Contents/Info.plist") << "<plist/>";
    const ProgramResult result = mac.create({"--uninstaller", folder});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "macsim: " + folder +
                  " is not an uninstaller's bundle: Contents/MacOS/Uninstall Sentrel is missing\n");
    EXPECT_FALSE(fs::exists(mac.path()));
}

TEST(MacsimCommandLine, RefusesAFolderThatIsNotASimulatedMac) {
    const SimulatedMac scratch;
    fs::create_directory(scratch.path());
    std::ofstream(scratch.path("/precious")) << "keep";
    for (const auto& arguments : std::vector<std::vector<std::string>>{{"run", scratch.path(), "--", "true"},
                                                                       {"log", scratch.path()},
                                                                       {"state", scratch.path()},
                                                                       {"delete", scratch.path()},
                                                                       {"delete", scratch.path("/nothing")},
                                                                       {"delete", "/"}}) {
        const ProgramResult result = macsim(arguments);
        EXPECT_EQ(result.status, 1);
        expectOneLine(result.err);
    }
    EXPECT_TRUE(fs::exists(scratch.path("/precious")));
}

TEST(MacsimCommandLine, NeverCreatesOverSomethingElse) {
    const SimulatedMac scratch;
    fs::create_directory(scratch.path());
    std::ofstream(scratch.path("/precious")) << "keep";
    const ProgramResult result = macsim({"create", scratch.path()});
    EXPECT_EQ(result.status, 1);
    expectOneLine(result.err);
    EXPECT_TRUE(fs::exists(scratch.path("/precious")));
    EXPECT_EQ(std::distance(fs::directory_iterator(scratch.scratch()), fs::directory_iterator()), 1);
}

TEST(MacsimCommandLine, CreatesInAnEmptyFolder) {
    SimulatedMac mac;
    fs::create_directory(mac.path());
    EXPECT_EQ(mac.create().status, 0);
    EXPECT_TRUE(mac.exists("/bin/launchctl"));
}

TEST(MacsimCommandLine, LeavesNothingWhenTheUninstallerIsMissing) {
    SimulatedMac mac;
    const ProgramResult result =
        mac.create({"--installed", "current", "--uninstaller", mac.scratch() + "/none.app"});
    EXPECT_EQ(result.status, 1);
    expectOneLine(result.err);
    EXPECT_TRUE(fs::is_empty(mac.scratch()));
}

TEST(MacsimCommandLine, ListsEveryFaultWithAnExplanation) {
    const ProgramResult result = macsim({"list-faults"});
    EXPECT_EQ(result.status, 0);
    for (const char* name :
         {"authorization", "bless-installer", "bless-support", "disk-full", "helper-exit-after=N",
          "helper-mute", "helper-pause=SECONDS", "immutable=PATH", "kext-busy", "launchctl-fail=VERB",
          "launchctl-hang=SECONDS", "no-installer-service", "package", "unreadable-passwd"}) {
        EXPECT_NE(result.out.find(std::string(name) + " "), std::string::npos) << name;
    }
}

TEST(MacsimCommandLine, StateBeforeTheFirstRunIsRefused) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create().status, 0);
    const ProgramResult result = macsim({"state", mac.path()});
    EXPECT_EQ(result.status, 1);
    expectOneLine(result.err);
}

TEST(MacsimCommandLine, DeletesWhatBelongsToOthersAndHasNoMode) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create().status, 0);
    ASSERT_EQ(mac.shell("mkdir -p ~/a/b && chmod 000 ~/a/b ~/a", "alice").status, 0);
    EXPECT_EQ(macsim({"delete", mac.path()}).status, 0);
    EXPECT_FALSE(fs::exists(mac.path()));
}

TEST(MacsimCommandLine, DeletesDeepTrees) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create().status, 0);
    ASSERT_EQ(mac.shell("cd /Users/Shared && python3 -c 'import os\n"
                        "for level in range(3000):\n"
                        "    os.mkdir(\"d\")\n"
                        "    os.chdir(\"d\")'")
                  .status,
              0);
    EXPECT_EQ(macsim({"delete", mac.path()}).status, 0);
    EXPECT_FALSE(fs::exists(mac.path()));
}

}  // namespace
