#include "SwiftUtils/LaunchctlUtil.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include "support/FakeMac.h"

namespace {

using Base::URL;
using SwiftUtils::LaunchctlUtil;
using TestSupport::CallList;
using TestSupport::FakeMac;
using Lines = std::vector<std::string>;

struct Operation {
    std::string name;
    std::function<bool()> run;
    std::vector<std::string> arguments;
};

std::string nameOf(const testing::TestParamInfo<Operation>& info) {
    return info.param.name;
}

class LaunchctlOperation : public testing::TestWithParam<Operation> {
  protected:
    [[nodiscard]] static std::string commandLine() {
        std::string line = "/bin/launchctl";
        for (const std::string& argument : GetParam().arguments) {
            line += " " + argument;
        }
        return line;
    }

    FakeMac mac;
};

TEST_P(LaunchctlOperation, RunsLaunchctlOnceWithExactlyItsArguments) {
    EXPECT_TRUE(GetParam().run());

    ASSERT_EQ(mac.tasks.argumentVectors.size(), 1U);
    EXPECT_EQ(mac.tasks.argumentVectors.front(), GetParam().arguments);
    EXPECT_EQ(mac.calls, (CallList{{"launch", commandLine()}, {"wait"}, {"read output"}, {"read error"}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST_P(LaunchctlOperation, IsFalseForAnyStatusOtherThanZero) {
    for (const std::int32_t status : {1, 3, 113, 255, -1}) {
        mac.tasks.results[commandLine()].status = status;
        EXPECT_FALSE(GetParam().run()) << status;
    }
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST_P(LaunchctlOperation, LooksAtTheStatusAndNotAtTheReason) {
    mac.tasks.results[commandLine()].reason = Platform::TerminationReason::uncaughtSignal;

    EXPECT_TRUE(GetParam().run());
}

TEST_P(LaunchctlOperation, LeavesWhatTheToolPrintedToTheLog) {
    mac.tasks.results[commandLine()] = {"", "Boot-out failed: 3: No such process", 3};

    EXPECT_FALSE(GetParam().run());

    EXPECT_EQ(
        mac.log.lines,
        (Lines{
            "[SNTM Installer]\nError description: Boot-out failed: 3: No such process;\ntermination status: "
            "3;\ntermination reason: exit."}));
}

const URL kPlist = URL::fileURL("/Library/Launch Things/x.plist");

INSTANTIATE_TEST_SUITE_P(
    All, LaunchctlOperation,
    testing::Values(
        Operation{"BootstrapDaemon",
                  [] { return LaunchctlUtil::bootstrapDaemon(kPlist); },
                  {"bootstrap", "system", "/Library/Launch Things/x.plist"}},
        Operation{"BootoutDaemon",
                  [] { return LaunchctlUtil::bootoutDaemon(kPlist); },
                  {"bootout", "system", "/Library/Launch Things/x.plist"}},
        Operation{"BootstrapAgent",
                  [] { return LaunchctlUtil::bootstrapAgent(kPlist, 501); },
                  {"bootstrap", "gui/501", "/Library/Launch Things/x.plist"}},
        Operation{"BootoutAgent",
                  [] { return LaunchctlUtil::bootoutAgent(kPlist, 501); },
                  {"bootout", "gui/501", "/Library/Launch Things/x.plist"}},
        Operation{"EnableDaemon", [] { return LaunchctlUtil::enableDaemon("x"); }, {"enable", "system/x"}},
        Operation{"IsDaemonRegistered",
                  [] { return LaunchctlUtil::isDaemonRegistered("x"); },
                  {"print", "system/x"}},
        Operation{"EnableAgent",
                  [] { return LaunchctlUtil::enableAgent("com.example.agent", 501); },
                  {"enable", "gui/501/com.example.agent"}},
        Operation{"IsAgentRegistered",
                  [] { return LaunchctlUtil::isAgentRegistered("com.example.agent", 501); },
                  {"print", "gui/501/com.example.agent"}}),
    nameOf);

TEST(BootstrapAgent, PassesTheDomainOfUserIdZero) {
    FakeMac mac;

    EXPECT_TRUE(LaunchctlUtil::bootstrapAgent(URL::fileURL("/x.plist"), 0));

    EXPECT_EQ(mac.callsOf("launch"), (CallList{{"launch", "/bin/launchctl bootstrap gui/0 /x.plist"}}));
}

TEST(BootoutAgent, PrintsTheLargestUserIdUnsigned) {
    FakeMac mac;

    EXPECT_TRUE(LaunchctlUtil::bootoutAgent(URL::fileURL("/x.plist"), 4294967294U));

    EXPECT_EQ(mac.callsOf("launch"),
              (CallList{{"launch", "/bin/launchctl bootout gui/4294967294 /x.plist"}}));
}

TEST(IsDaemonRegistered, RunsLaunchctlWithExactlyTheTwoArgumentsPrintAndTheService) {
    FakeMac mac;

    EXPECT_TRUE(LaunchctlUtil::isDaemonRegistered("x"));

    ASSERT_EQ(mac.tasks.argumentVectors.size(), 1U);
    EXPECT_EQ(mac.tasks.argumentVectors.front(), (std::vector<std::string>{"print", "system/x"}));
}

TEST(LaunchctlDeathTest, EndsTheProcessWhenTheToolCannotBeRun) {
    FakeMac mac;
    mac.tasks.notExecutable.insert("/bin/launchctl");

    EXPECT_EXIT(static_cast<void>(LaunchctlUtil::enableDaemon("x")), testing::KilledBySignal(SIGABRT),
                "^Fatal error: launch path not accessible: /bin/launchctl\n$");
}

}  // namespace
