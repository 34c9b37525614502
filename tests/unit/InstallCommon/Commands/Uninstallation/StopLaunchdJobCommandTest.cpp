#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "NorvikCommon/UIDUtil.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"
#include "unit/InstallCommon/CommandArchives.h"
#include "unit/InstallCommon/Commands/LaunchdJobCalls.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;
using namespace LaunchdJobTests;
using InstallCommon::StopLaunchdJobCommand;
using TestSupport::afterTheWire;
using TestSupport::FakeMac;
using TestSupport::ForeignCommand;

std::string bootoutLine(std::uint32_t user) {
    return installerLine("Disable & bootout agent com.norvik.job for ") + std::to_string(user);
}

TEST(StopLaunchdJobCommand, MadeForADaemonArchivesIsDaemonTrueAndDecodesAsItself) {
    const auto command =
        afterTheWire<StopLaunchdJobCommand>(*StopLaunchdJobCommand::withDaemon("Stopping...", job()));

    ASSERT_NE(command, nullptr);
    EXPECT_TRUE(command->isDaemon());
    EXPECT_EQ(command->launchdJob(), job());
    EXPECT_EQ(command->commandDescription(), "Stopping...");
}

TEST(StopLaunchdJobCommand, ReadsAMissingIsDaemonAsFalse) {
    const ForeignCommand archived(StopLaunchdJobCommand::staticClass(), [](Base::Coder& coder) {
        coder.encodeObject("agent", Base::CodedRecord(job()));
        coder.encodeString("commandDescription", "");
    });

    const auto command = afterTheWire<StopLaunchdJobCommand>(archived);

    ASSERT_NE(command, nullptr);
    EXPECT_FALSE(command->isDaemon());
}

// Stop, daemon

TEST(StopLaunchdJobCommand, BootsARegisteredDaemonOutAndSleepsFiveSeconds) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/a"}};

    StopLaunchdJobCommand::withDaemon("", job())->execute();

    EXPECT_EQ(mac.calls, joined({launchctl("print system/com.norvik.job"),
                                 launchctl("bootout system " + kPlist),
                                 {{"sleep", 5}}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(StopLaunchdJobCommand, MakesNoBootoutCallAndDoesNotSleepForADaemonThatIsNotRegistered) {
    FakeMac mac;
    mac.tasks.results["/bin/launchctl print system/com.norvik.job"].status = 113;

    StopLaunchdJobCommand::withDaemon("", job())->execute();

    EXPECT_EQ(mac.calls, launchctl("print system/com.norvik.job"));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(StopLaunchdJobCommand, DoesNotSleepWhenTheBootoutOfARegisteredDaemonFails) {
    FakeMac mac;
    mac.tasks.results["/bin/launchctl bootout system " + kPlist].status = 36;

    StopLaunchdJobCommand::withDaemon("", job())->execute();

    EXPECT_EQ(mac.calls,
              joined({launchctl("print system/com.norvik.job"), launchctl("bootout system " + kPlist)}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

// Stop, agent

TEST(StopLaunchdJobCommand, BootsAnAgentOutForUserIdZeroAlsoWithoutUsers) {
    FakeMac mac;
    mac.users.real = 77;

    StopLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.calls,
              joined({{{"seteuid", 0}}, launchctl("bootout gui/0 " + kPlist), {{"seteuid", 77}}, kUserWalk}));
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Disable & bootout agent com.norvik.job for 0")}));
}

TEST(StopLaunchdJobCommand, BootsAnAgentOutForUserIdZeroFirstAndThenForEachUserUnderThatUsersId) {
    FakeMac mac;
    mac.users.real = 77;
    mac.users.entries = {{501, "/Users/a"}, {502, "/Users/b"}, {89, "/var/db/x"}};
    const std::vector<std::uint32_t> users = NorvikCommon::UIDUtil::allUsers();
    ASSERT_EQ(users.size(), 2U);
    mac.calls.clear();

    StopLaunchdJobCommand::withAgent("", job())->execute();

    CallList calls =
        joined({{{"seteuid", 0}}, launchctl("bootout gui/0 " + kPlist), {{"seteuid", 77}}, kUserWalk});
    Lines lines{bootoutLine(0)};
    for (const std::uint32_t user : users) {
        const std::string id = std::to_string(user);
        calls = joined(
            {calls, {{"seteuid", id}}, launchctl("bootout gui/" + id + " " + kPlist), {{"seteuid", 77}}});
        lines.push_back(bootoutLine(user));
    }
    EXPECT_EQ(mac.calls, calls);
    EXPECT_EQ(mac.log.lines, lines);
}

TEST(StopLaunchdJobCommand, HandlesUserIdZeroASecondTimeWhenItIsListed) {
    FakeMac mac;
    mac.users.entries = {{0, "/Users/root"}};

    StopLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.log.lines, (Lines{bootoutLine(0), bootoutLine(0)}));
    EXPECT_EQ(mac.calls, joined({{{"seteuid", 0}},
                                 launchctl("bootout gui/0 " + kPlist),
                                 {{"seteuid", 0}},
                                 kUserWalk,
                                 {{"seteuid", 0}},
                                 launchctl("bootout gui/0 " + kPlist),
                                 {{"seteuid", 0}}}));
}

TEST(StopLaunchdJobCommand, GoesOnWithTheNextUserAfterAFailedBootoutAndNeverSleepsForAnAgent) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/a"}};
    mac.tasks.results["/bin/launchctl bootout gui/0 " + kPlist] = {"", "No such domain", 125};

    StopLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.log.lines,
              (Lines{bootoutLine(0),
                     "[SNTM Installer]\nError description: No such domain;\ntermination status: "
                     "125;\ntermination reason: exit.",
                     bootoutLine(501)}));
    EXPECT_EQ(mac.callsOf("launch"), (CallList{{"launch", "/bin/launchctl bootout gui/0 " + kPlist},
                                               {"launch", "/bin/launchctl bootout gui/501 " + kPlist}}));
    EXPECT_EQ(mac.callsOf("sleep"), CallList{});
}

TEST(StopLaunchdJobCommand, MakesNoRegistrationCheckForAnAgent) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/a"}};

    StopLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.callsOf("launch", "/bin/launchctl print"), CallList{});
}

// Records with missing keys

TEST(StopLaunchdJobCommand, ExecutesHarmlesslyWithARecordThatLacksKeys) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/a"}};
    for (const LaunchdInfo& incomplete : incompleteJobs()) {
        for (const bool isDaemon : {true, false}) {
            const auto command =
                afterTheWire<StopLaunchdJobCommand>(StopLaunchdJobCommand("", incomplete, isDaemon));
            ASSERT_NE(command, nullptr);
            command->execute();
        }
    }
    EXPECT_EQ(mac.calls, CallList{});
    EXPECT_EQ(mac.log.lines, Lines{});
}

}  // namespace
