#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "NorvikCommon/UIDUtil.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"
#include "unit/InstallCommon/CommandArchives.h"
#include "unit/InstallCommon/Commands/LaunchdJobCalls.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;
using namespace LaunchdJobTests;
using InstallCommon::StartLaunchdJobCommand;
using TestSupport::afterTheWire;
using TestSupport::FakeMac;
using TestSupport::ForeignCommand;

TEST(StartLaunchdJobCommand, MadeForAnAgentKeepsItsKindOnTheWire) {
    const auto command =
        afterTheWire<StartLaunchdJobCommand>(*StartLaunchdJobCommand::withAgent("Starting...", job()));

    ASSERT_NE(command, nullptr);
    EXPECT_FALSE(command->isDaemon());
    EXPECT_EQ(command->launchdJob(), job());
}

TEST(StartLaunchdJobCommand, ArchivesItsDaemonUnderAgentWithIsDaemonTrue) {
    // The same keys, written by hand, are what it reads.
    const ForeignCommand archived(StartLaunchdJobCommand::staticClass(), [](Base::Coder& coder) {
        coder.encodeObject("agent", Base::CodedRecord(job()));
        coder.encodeBool("isDaemon", true);
        coder.encodeString("commandDescription", "Starting...");
    });
    const auto sent = StartLaunchdJobCommand::withDaemon("Starting...", job());
    const std::vector<const Base::CodedObject*> byHand{&archived};
    const std::vector<const Base::CodedObject*> bySelf{sent.get()};

    EXPECT_EQ(Base::archivedArray(bySelf), Base::archivedArray(byHand));
}

// Start

TEST(StartLaunchdJobCommand, SetsTheModeEnablesAndBootstrapsADaemon) {
    FakeMac mac;
    mac.files.addFile(kPlist);
    mac.users.entries = {{501, "/Users/a"}};

    StartLaunchdJobCommand::withDaemon("", job())->execute();

    EXPECT_EQ(mac.calls, joined({{{"chmod", kPlist, 644}},
                                 launchctl("enable system/com.norvik.job"),
                                 launchctl("bootstrap system " + kPlist)}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(StartLaunchdJobCommand, LeavesThePlistWithTheModeBitsOctal1204) {
    FakeMac mac;
    mac.files.addFile(kPlist);

    StartLaunchdJobCommand::withDaemon("", job())->execute();
    EXPECT_EQ(mac.files.at(kPlist).mode, 01204);

    mac.files.nodes[kPlist].mode = 0644;
    StartLaunchdJobCommand::withAgent("", job())->execute();
    EXPECT_EQ(mac.files.at(kPlist).mode, 01204);
}

TEST(StartLaunchdJobCommand, DoesNothingAfterTheModeChangeForAnAgentWithoutUsers) {
    FakeMac mac;
    mac.files.addFile(kPlist);
    mac.users.entries = {{0, "/var/root"}};

    StartLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.calls, joined({{{"chmod", kPlist, 644}}, kUserWalk}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(StartLaunchdJobCommand,
     EnablesAndBootstrapsAnAgentForEachUserUnderThatUsersIdWithoutAPassForUserIdZero) {
    FakeMac mac;
    mac.users.real = 77;
    mac.files.addFile(kPlist);
    mac.users.entries = {{501, "/Users/a"}, {502, "/Users/b"}};
    const std::vector<std::uint32_t> users = NorvikCommon::UIDUtil::allUsers();
    ASSERT_EQ(users.size(), 2U);
    mac.calls.clear();

    StartLaunchdJobCommand::withAgent("", job())->execute();

    CallList expected = joined({{{"chmod", kPlist, 644}}, kUserWalk});
    for (const std::uint32_t user : users) {
        const std::string domain = "gui/" + std::to_string(user);
        expected = joined({expected,
                           {{"seteuid", user}},
                           launchctl("enable " + domain + "/com.norvik.job"),
                           launchctl("bootstrap " + domain + " " + kPlist),
                           {{"seteuid", 77}}});
    }
    EXPECT_EQ(mac.calls, expected);
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(StartLaunchdJobCommand, ExaminesNoResults) {
    FakeMac mac;
    mac.files.addFile(kPlist);
    mac.users.entries = {{501, "/Users/a"}};
    mac.tasks.results["/bin/launchctl enable system/com.norvik.job"].status = 1;
    mac.tasks.results["/bin/launchctl enable gui/501/com.norvik.job"].status = 1;

    StartLaunchdJobCommand::withDaemon("", job())->execute();
    StartLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.callsOf("launch"), (CallList{{"launch", "/bin/launchctl enable system/com.norvik.job"},
                                               {"launch", "/bin/launchctl bootstrap system " + kPlist},
                                               {"launch", "/bin/launchctl enable gui/501/com.norvik.job"},
                                               {"launch", "/bin/launchctl bootstrap gui/501 " + kPlist}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(StartLaunchdJobCommand, GoesOnAfterAFailedModeChange) {
    FakeMac mac;

    StartLaunchdJobCommand::withDaemon("", job())->execute();

    EXPECT_EQ(mac.log.lines,
              (Lines{installerLine("Chmod failed for path file://") + kPlist + " and set errno to 9"}));
    EXPECT_EQ(mac.callsOf("launch").size(), 2U);
}

// Records with missing keys

TEST(StartLaunchdJobCommand, ExecutesHarmlesslyWithARecordThatLacksKeys) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/a"}};
    for (const LaunchdInfo& incomplete : incompleteJobs()) {
        for (const bool isDaemon : {true, false}) {
            const auto command =
                afterTheWire<StartLaunchdJobCommand>(StartLaunchdJobCommand("", incomplete, isDaemon));
            ASSERT_NE(command, nullptr);
            command->execute();
        }
    }
    EXPECT_EQ(mac.calls, CallList{});
    EXPECT_EQ(mac.log.lines, Lines{});
}

}  // namespace
