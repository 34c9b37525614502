#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "NorvikCommon/UIDUtil.h"
#include "support/FakeMac.h"
#include "unit/InstallCommon/CommandArchives.h"

namespace {

using Base::URL;
using InstallCommon::LaunchdJobCommand;
using InstallCommon::StartLaunchdJobCommand;
using InstallCommon::StopLaunchdJobCommand;
using NorvikCommon::LaunchdInfo;
using TestSupport::afterTheWire;
using TestSupport::CallList;
using TestSupport::FakeMac;
using TestSupport::ForeignCommand;

const std::string kPlist = "/Library/LaunchDaemons/com.norvik.job.plist";

LaunchdInfo job() {
    return LaunchdInfo::launchdWithName("job", URL::fileURL("/Library/LaunchDaemons"));
}

/// The calls of one run of launchctl.
CallList launchctl(const std::string& arguments) {
    return {"launch /bin/launchctl " + arguments, "wait", "read output", "read error"};
}

/// What a walk through the users calls.
const CallList kUserWalk{"setpwent", "endpwent"};

CallList joined(const std::vector<CallList>& parts) {
    CallList all;
    for (const CallList& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

std::string bootoutLine(std::uint32_t user) {
    return "[SNTM Installer] Disable & bootout agent com.norvik.job for " + std::to_string(user);
}

// Both: construction and the wire

TEST(LaunchdJobCommand, HasWeightOneAndKeepsJobKindAndDescription) {
    const auto agent = StartLaunchdJobCommand::withAgent("Starting...", job());
    EXPECT_EQ(agent->launchdJob(), job());
    EXPECT_FALSE(agent->isDaemon());
    EXPECT_EQ(agent->commandDescription(), "Starting...");
    EXPECT_EQ(agent->weight(), 1);

    const auto daemon = StopLaunchdJobCommand::withDaemon("Stopping...", job());
    EXPECT_EQ(daemon->launchdJob(), job());
    EXPECT_TRUE(daemon->isDaemon());
    EXPECT_EQ(daemon->commandDescription(), "Stopping...");
    EXPECT_EQ(daemon->weight(), 1);
}

TEST(StopLaunchdJobCommand, MadeForADaemonArchivesIsDaemonTrueAndDecodesAsItself) {
    const auto command =
        afterTheWire<StopLaunchdJobCommand>(*StopLaunchdJobCommand::withDaemon("Stopping...", job()));

    ASSERT_NE(command, nullptr);
    EXPECT_TRUE(command->isDaemon());
    EXPECT_EQ(command->launchdJob(), job());
    EXPECT_EQ(command->commandDescription(), "Stopping...");
}

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

TEST(StopLaunchdJobCommand, ReadsAMissingIsDaemonAsFalse) {
    const ForeignCommand archived(StopLaunchdJobCommand::staticClass(), [](Base::Coder& coder) {
        coder.encodeObject("agent", Base::CodedRecord(job()));
        coder.encodeString("commandDescription", "");
    });

    const auto command = afterTheWire<StopLaunchdJobCommand>(archived);

    ASSERT_NE(command, nullptr);
    EXPECT_FALSE(command->isDaemon());
}

TEST(LaunchdJobCommand, DoesNotDecodeWithoutItsJobOrWithAnotherRecordOrWithoutADescription) {
    const std::vector<std::function<void(Base::Coder&)>> faults{
        [](Base::Coder& coder) {
            coder.encodeBool("isDaemon", true);
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) {
            coder.encodeObject("daemon", Base::CodedRecord(job()));
            coder.encodeBool("isDaemon", true);
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) {
            coder.encodeObject("agent", Base::CodedRecord(*job().plist));
            coder.encodeBool("isDaemon", true);
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) {
            coder.encodeObject("agent", Base::CodedRecord(job()));
            coder.encodeBool("isDaemon", true);
        }};
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const ForeignCommand start(StartLaunchdJobCommand::staticClass(), faults[i]);
        const ForeignCommand stop(StopLaunchdJobCommand::staticClass(), faults[i]);
        EXPECT_EQ(afterTheWire<StartLaunchdJobCommand>(start), nullptr) << i;
        EXPECT_EQ(afterTheWire<StopLaunchdJobCommand>(stop), nullptr) << i;
    }
}

TEST(LaunchdJobCommandDeathTest, HasNoExecute) {
    const LaunchdJobCommand command("", job(), true);

    EXPECT_EXIT(command.execute(), testing::KilledBySignal(SIGABRT),
                testing::Eq("Fatal error: Should be overriden by subclasses.\n"));
}

// Start

TEST(StartLaunchdJobCommand, SetsTheModeEnablesAndBootstrapsADaemon) {
    FakeMac mac;
    mac.files.addFile(kPlist);
    mac.users.entries = {{501, "/Users/a"}};

    StartLaunchdJobCommand::withDaemon("", job())->execute();

    EXPECT_EQ(mac.calls, joined({{"chmod " + kPlist + " 644"},
                                 launchctl("enable system/com.norvik.job"),
                                 launchctl("bootstrap system " + kPlist)}));
    EXPECT_EQ(mac.log.lines, CallList{});
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

    EXPECT_EQ(mac.calls, joined({{"chmod " + kPlist + " 644"}, kUserWalk}));
    EXPECT_EQ(mac.log.lines, CallList{});
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

    CallList expected = joined({{"chmod " + kPlist + " 644"}, kUserWalk});
    for (const std::uint32_t user : users) {
        const std::string domain = "gui/" + std::to_string(user);
        expected = joined({expected,
                           {"seteuid " + std::to_string(user)},
                           launchctl("enable " + domain + "/com.norvik.job"),
                           launchctl("bootstrap " + domain + " " + kPlist),
                           {"seteuid 77"}});
    }
    EXPECT_EQ(mac.calls, expected);
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(StartLaunchdJobCommand, ExaminesNoResults) {
    FakeMac mac;
    mac.files.addFile(kPlist);
    mac.users.entries = {{501, "/Users/a"}};
    mac.tasks.results["/bin/launchctl enable system/com.norvik.job"].status = 1;
    mac.tasks.results["/bin/launchctl enable gui/501/com.norvik.job"].status = 1;

    StartLaunchdJobCommand::withDaemon("", job())->execute();
    StartLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.callsOf("launch"), (CallList{"launch /bin/launchctl enable system/com.norvik.job",
                                               "launch /bin/launchctl bootstrap system " + kPlist,
                                               "launch /bin/launchctl enable gui/501/com.norvik.job",
                                               "launch /bin/launchctl bootstrap gui/501 " + kPlist}));
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(StartLaunchdJobCommand, GoesOnAfterAFailedModeChange) {
    FakeMac mac;

    StartLaunchdJobCommand::withDaemon("", job())->execute();

    EXPECT_EQ(mac.log.lines,
              (CallList{"[SNTM Installer] Chmod failed for path file://" + kPlist + " and set errno to 9"}));
    EXPECT_EQ(mac.callsOf("launch").size(), 2U);
}

// Stop, daemon

TEST(StopLaunchdJobCommand, BootsARegisteredDaemonOutAndSleepsFiveSeconds) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/a"}};

    StopLaunchdJobCommand::withDaemon("", job())->execute();

    EXPECT_EQ(mac.calls, joined({launchctl("print system/com.norvik.job"),
                                 launchctl("bootout system " + kPlist),
                                 {"sleep 5"}}));
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(StopLaunchdJobCommand, MakesNoBootoutCallAndDoesNotSleepForADaemonThatIsNotRegistered) {
    FakeMac mac;
    mac.tasks.results["/bin/launchctl print system/com.norvik.job"].status = 113;

    StopLaunchdJobCommand::withDaemon("", job())->execute();

    EXPECT_EQ(mac.calls, launchctl("print system/com.norvik.job"));
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(StopLaunchdJobCommand, DoesNotSleepWhenTheBootoutOfARegisteredDaemonFails) {
    FakeMac mac;
    mac.tasks.results["/bin/launchctl bootout system " + kPlist].status = 36;

    StopLaunchdJobCommand::withDaemon("", job())->execute();

    EXPECT_EQ(mac.calls,
              joined({launchctl("print system/com.norvik.job"), launchctl("bootout system " + kPlist)}));
    EXPECT_EQ(mac.log.lines, CallList{});
}

// Stop, agent

TEST(StopLaunchdJobCommand, BootsAnAgentOutForUserIdZeroAlsoWithoutUsers) {
    FakeMac mac;
    mac.users.real = 77;

    StopLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.calls,
              joined({{"seteuid 0"}, launchctl("bootout gui/0 " + kPlist), {"seteuid 77"}, kUserWalk}));
    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Disable & bootout agent com.norvik.job for 0"}));
}

TEST(StopLaunchdJobCommand, BootsAnAgentOutForUserIdZeroFirstAndThenForEachUserUnderThatUsersId) {
    FakeMac mac;
    mac.users.real = 77;
    mac.users.entries = {{501, "/Users/a"}, {502, "/Users/b"}, {89, "/var/db/x"}};
    const std::vector<std::uint32_t> users = NorvikCommon::UIDUtil::allUsers();
    ASSERT_EQ(users.size(), 2U);
    mac.calls.clear();

    StopLaunchdJobCommand::withAgent("", job())->execute();

    CallList calls = joined({{"seteuid 0"}, launchctl("bootout gui/0 " + kPlist), {"seteuid 77"}, kUserWalk});
    CallList lines{bootoutLine(0)};
    for (const std::uint32_t user : users) {
        const std::string id = std::to_string(user);
        calls =
            joined({calls, {"seteuid " + id}, launchctl("bootout gui/" + id + " " + kPlist), {"seteuid 77"}});
        lines.push_back(bootoutLine(user));
    }
    EXPECT_EQ(mac.calls, calls);
    EXPECT_EQ(mac.log.lines, lines);
}

TEST(StopLaunchdJobCommand, HandlesUserIdZeroASecondTimeWhenItIsListed) {
    FakeMac mac;
    mac.users.entries = {{0, "/Users/root"}};

    StopLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.log.lines, (CallList{bootoutLine(0), bootoutLine(0)}));
    EXPECT_EQ(mac.calls, joined({{"seteuid 0"},
                                 launchctl("bootout gui/0 " + kPlist),
                                 {"seteuid 0"},
                                 kUserWalk,
                                 {"seteuid 0"},
                                 launchctl("bootout gui/0 " + kPlist),
                                 {"seteuid 0"}}));
}

TEST(StopLaunchdJobCommand, GoesOnWithTheNextUserAfterAFailedBootoutAndNeverSleepsForAnAgent) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/a"}};
    mac.tasks.results["/bin/launchctl bootout gui/0 " + kPlist] = {"", "No such domain", 125};

    StopLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.log.lines,
              (CallList{bootoutLine(0),
                        "[SNTM Installer]\nError description: No such domain;\ntermination status: "
                        "125;\ntermination reason: exit.",
                        bootoutLine(501)}));
    EXPECT_EQ(mac.callsOf("launch"), (CallList{"launch /bin/launchctl bootout gui/0 " + kPlist,
                                               "launch /bin/launchctl bootout gui/501 " + kPlist}));
    EXPECT_EQ(mac.callsOf("sleep"), CallList{});
}

TEST(StopLaunchdJobCommand, MakesNoRegistrationCheckForAnAgent) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/a"}};

    StopLaunchdJobCommand::withAgent("", job())->execute();

    EXPECT_EQ(mac.callsOf("launch /bin/launchctl print"), CallList{});
}

// Records with missing keys

std::vector<LaunchdInfo> incompleteJobs() {
    LaunchdInfo withoutLabel = job();
    withoutLabel.label.reset();
    LaunchdInfo withoutPlist = job();
    withoutPlist.plist.reset();
    LaunchdInfo withoutLocation = job();
    withoutLocation.plist->location.reset();
    return {withoutLabel, withoutPlist, withoutLocation, LaunchdInfo{}};
}

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
    EXPECT_EQ(mac.log.lines, CallList{});
}

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
    EXPECT_EQ(mac.log.lines, CallList{});
}

}  // namespace
