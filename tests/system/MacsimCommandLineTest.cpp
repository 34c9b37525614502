#include <filesystem>
#include <fstream>

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

TEST(MacsimCommandLine, RefusesAFolderThatIsNoSimulatedMac) {
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
    ASSERT_EQ(
        mac.shell("cd /Users/Shared; i=0; while [ $i -lt 3000 ]; do mkdir d; cd d; i=$((i+1)); done").status,
        0);
    EXPECT_EQ(macsim({"delete", mac.path()}).status, 0);
    EXPECT_FALSE(fs::exists(mac.path()));
}

}  // namespace
