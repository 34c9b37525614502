#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <vector>

#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "unit/InstallCommon/CommandArchives.h"
#include "unit/InstallCommon/Commands/LaunchdJobCalls.h"

namespace {

using namespace LaunchdJobTests;
using InstallCommon::LaunchdJobCommand;
using InstallCommon::StartLaunchdJobCommand;
using InstallCommon::StopLaunchdJobCommand;
using TestSupport::afterTheWire;
using TestSupport::ForeignCommand;

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

}  // namespace
