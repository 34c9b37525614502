#include <gtest/gtest.h>

#include "Base/Archive/KeyedArchiver.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "InstallCommon/CommandSuitsProvider.h"
#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "support/CommandText.h"
#include "unit/InstallCommon/CommandCoding.h"

namespace {

using namespace InstallCommon;
using namespace NorvikCommon;
using Base::URL;
using CommandCodingTests::CommandCoding;
using CommandCodingTests::kJob;
using CommandCodingTests::Stranger;

TEST_F(CommandCoding, ClassesCarryTheirRuntimeNames) {
    EXPECT_EQ(CommandConcrete::staticClass().runtimeName, "_TtC13InstallCommon15CommandConcrete");
    EXPECT_EQ(RemoveCommand::staticClass().runtimeName, "_TtC13InstallCommon13RemoveCommand");
    EXPECT_EQ(CopyCommand::staticClass().runtimeName, "_TtC13InstallCommon11CopyCommand");
    EXPECT_EQ(LaunchdJobCommand::staticClass().runtimeName, "_TtC13InstallCommon17LaunchdJobCommand");
    EXPECT_EQ(StartLaunchdJobCommand::staticClass().runtimeName,
              "_TtC13InstallCommon22StartLaunchdJobCommand");
    EXPECT_EQ(StopLaunchdJobCommand::staticClass().runtimeName, "_TtC13InstallCommon21StopLaunchdJobCommand");
    EXPECT_EQ(KillProcessCommand::staticClass().runtimeName, "_TtC13InstallCommon18KillProcessCommand");
    EXPECT_EQ(UnloadKextCommand::staticClass().runtimeName, "_TtC13InstallCommon17UnloadKextCommand");
    EXPECT_EQ(UpdateLaunchServices::staticClass().runtimeName, "_TtC13InstallCommon20UpdateLaunchServices");
}

TEST_F(CommandCoding, StartAndStopDeriveFromTheJobCommand) {
    EXPECT_EQ(StartLaunchdJobCommand::staticClass().superclass, &LaunchdJobCommand::staticClass());
    EXPECT_EQ(StopLaunchdJobCommand::staticClass().superclass, &LaunchdJobCommand::staticClass());
    EXPECT_EQ(LaunchdJobCommand::staticClass().superclass, &CommandConcrete::staticClass());
}

TEST_F(CommandCoding, ADecodedCommandWhoseSenderSetWeight5ReportsWeight1) {
    KillProcessCommand command("d", "p");
    command.setWeight(5);
    EXPECT_EQ(command.weight(), 5);
    const auto decoded = roundTrip(command);
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(decoded->weight(), 1);
}

TEST_F(CommandCoding, AnArchiveWithoutADescriptionDecodesToNoCommandOfAnyClass) {
    const std::vector<URL> urls{URL::fileURL("/a")};
    const std::vector<std::pair<const Base::CodedClass*, std::function<void(Base::Coder&)>>> classes{
        {&RemoveCommand::staticClass(),
         [&](Base::Coder& coder) {
             coder.encodeURLs("source", urls);
             coder.encodeBools("destination", {false});
         }},
        {&CopyCommand::staticClass(),
         [&](Base::Coder& coder) {
             coder.encodeURLs("source", urls);
             coder.encodeURLs("destination", urls);
         }},
        {&StartLaunchdJobCommand::staticClass(),
         [](Base::Coder& coder) { coder.encodeObject("agent", Base::CodedRecord(kJob)); }},
        {&StopLaunchdJobCommand::staticClass(),
         [](Base::Coder& coder) { coder.encodeObject("agent", Base::CodedRecord(kJob)); }},
        {&KillProcessCommand::staticClass(), [](Base::Coder& coder) { coder.encodeString("kext", "p"); }},
        {&UnloadKextCommand::staticClass(),
         [](Base::Coder& coder) { coder.encodeObject("kext", Base::CodedRecord(KextInfo())); }},
        {&UpdateLaunchServices::staticClass(), [](Base::Coder&) {}}};
    for (const auto& [codedClass, keys] : classes) {
        refusal_.clear();
        EXPECT_EQ(sent(Stranger(*codedClass, keys)), nullptr) << codedClass->runtimeName;
        EXPECT_NE(refusal_.find("commandDescription"), std::string::npos) << refusal_;
        const auto complete = [&keys = keys](Base::Coder& coder) {
            keys(coder);
            coder.encodeString("commandDescription", "d");
        };
        EXPECT_NE(sent(Stranger(*codedClass, complete)), nullptr)
            << codedClass->runtimeName << " " << refusal_;
    }
}

TEST_F(CommandCoding, AKillProcessCommandDecodesOnlyIfTheNameIsUnderKext) {
    EXPECT_EQ(sent(Stranger(KillProcessCommand::staticClass(),
                            [](Base::Coder& coder) {
                                coder.encodeString("process", "Finder");
                                coder.encodeString("commandDescription", "d");
                            })),
              nullptr);
    const auto decoded = roundTrip(KillProcessCommand("d", "Finder"));
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(decoded->process(), "Finder");
    EXPECT_EQ(decoded->commandDescription(), "d");
}

TEST_F(CommandCoding, AStartCommandForADaemonArchivesItsRecordUnderAgentWithIsDaemonTrue) {
    const auto archive = StartLaunchdJobCommand::withDaemon("d", kJob);
    const auto decoded = roundTrip(*archive);
    ASSERT_NE(decoded, nullptr);
    EXPECT_TRUE(decoded->isDaemon());
    EXPECT_EQ(decoded->launchdJob(), kJob);
    EXPECT_EQ(sent(Stranger(StartLaunchdJobCommand::staticClass(),
                            [](Base::Coder& coder) {
                                coder.encodeObject("daemon", Base::CodedRecord(kJob));
                                coder.encodeBool("isDaemon", true);
                                coder.encodeString("commandDescription", "d");
                            })),
              nullptr);
    EXPECT_NE(refusal_.find("agent"), std::string::npos) << refusal_;
}

TEST_F(CommandCoding, AStopCommandMadeForADaemonDecodesAsAStopCommandForADaemon) {
    const auto decoded = roundTrip(*StopLaunchdJobCommand::withDaemon("d", kJob));
    ASSERT_NE(decoded, nullptr);
    EXPECT_TRUE(decoded->isDaemon());
    const auto agent = roundTrip(*StopLaunchdJobCommand::withAgent("d", kJob));
    ASSERT_NE(agent, nullptr);
    EXPECT_FALSE(agent->isDaemon());
}

TEST_F(CommandCoding, AMissingIsDaemonReadsAsFalse) {
    const auto decoded = sent(Stranger(StopLaunchdJobCommand::staticClass(), [](Base::Coder& coder) {
        coder.encodeObject("agent", Base::CodedRecord(kJob));
        coder.encodeString("commandDescription", "d");
    }));
    const auto* stop = dynamic_cast<const StopLaunchdJobCommand*>(decoded.get());
    ASSERT_NE(stop, nullptr);
    EXPECT_FALSE(stop->isDaemon());
}

TEST_F(CommandCoding, ThreePathsAndTwoFlagsDecodeToTwoPairs) {
    const std::vector<URL> paths{URL::fileURL("/a"), URL::fileURL("/b"), URL::fileURL("/c")};
    const auto decoded = sent(Stranger(RemoveCommand::staticClass(), [&](Base::Coder& coder) {
        coder.encodeURLs("source", paths);
        coder.encodeBools("destination", {true, false});
        coder.encodeString("commandDescription", "d");
    }));
    const auto* remove = dynamic_cast<const RemoveCommand*>(decoded.get());
    ASSERT_NE(remove, nullptr);
    const std::vector<RemoveCommand::Item> expected{{paths[0], true}, {paths[1], false}};
    EXPECT_EQ(remove->itemsToRemove(), expected);
}

TEST_F(CommandCoding, ThreeSourcesAndTwoDestinationsDecodeToTwoPairs) {
    const std::vector<URL> paths{URL::fileURL("/a"), URL::fileURL("/b"), URL::fileURL("/c")};
    const auto decoded = sent(Stranger(CopyCommand::staticClass(), [&](Base::Coder& coder) {
        coder.encodeURLs("source", paths);
        coder.encodeURLs("destination", std::vector{paths[0], paths[1]});
        coder.encodeString("commandDescription", "d");
    }));
    const auto* copy = dynamic_cast<const CopyCommand*>(decoded.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->itemsToCopy().size(), 2U);
}

TEST_F(CommandCoding, FlagsThatAreNoBooleansAreRefused) {
    EXPECT_EQ(sent(Stranger(RemoveCommand::staticClass(),
                            [](Base::Coder& coder) {
                                coder.encodeURLs("source", std::vector{URL::fileURL("/a")});
                                coder.encodeURLs("destination", std::vector{URL::fileURL("/b")});
                                coder.encodeString("commandDescription", "d");
                            })),
              nullptr);
    EXPECT_NE(refusal_.find("destination"), std::string::npos) << refusal_;
}

TEST_F(CommandCoding, AnEmptyItemListRoundTrips) {
    const auto remove = roundTrip(RemoveCommand("d", std::vector<RemoveCommand::Item>{}));
    ASSERT_NE(remove, nullptr);
    EXPECT_TRUE(remove->itemsToRemove().empty());
    const auto copy = roundTrip(CopyCommand("d", std::vector<CopyCommand::Item>{}));
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(copy->itemsToCopy().empty());
}

TEST_F(CommandCoding, EveryConcreteCommandRoundTrips) {
    CommandList commands;
    commands.push_back(std::make_unique<RemoveCommand>(
        "r",
        std::vector<RemoveCommand::Item>{{URL::fileURL("/a b"), true}, {URL::fileURL("/\xC3\xA9"), false}}));
    commands.push_back(std::make_unique<CopyCommand>("c", URL::fileURL("/s"), URL::fileURL("/d")));
    commands.push_back(StartLaunchdJobCommand::withAgent("s", kJob));
    commands.push_back(StopLaunchdJobCommand::withDaemon("t", kJob));
    commands.push_back(std::make_unique<KillProcessCommand>("k", "NORVIK \xE2\x82\xAC \xF0\x9F\x98\x80"));
    commands.push_back(std::make_unique<UnloadKextCommand>("u", KextInfo::kextWithName("F", "id")));
    commands.push_back(std::make_unique<UpdateLaunchServices>("l"));
    CommandList decoded;
    for (const auto& command : commands) {
        decoded.push_back(sent(*command));
        ASSERT_NE(decoded.back(), nullptr) << refusal_;
    }
    EXPECT_EQ(TestSupport::commandTexts(decoded), TestSupport::commandTexts(commands));
}

TEST_F(CommandCoding, TheWholeListOf75RoundTripsByteForByte) {
    CommandList commands = CommandSuitsProvider::makeUninstallCommands();
    for (auto& command : CommandSuitsProvider::makeCleanupCommands()) {
        commands.push_back(std::move(command));
    }
    std::vector<const Base::CodedObject*> borrowed;
    for (const auto& command : commands) {
        borrowed.push_back(command.get());
    }
    const auto archive = Base::archivedArray(borrowed);
    auto objects = Base::unarchivedArray(archive, allowedCommandListClasses(), refusal_);
    ASSERT_TRUE(objects) << refusal_;
    const auto decoded = commandList(std::move(*objects));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(TestSupport::commandTexts(*decoded), TestSupport::commandTexts(commands));
    std::vector<const Base::CodedObject*> again;
    for (const auto& command : *decoded) {
        again.push_back(command.get());
    }
    EXPECT_EQ(Base::archivedArray(again), archive);
}

TEST_F(CommandCoding, ABaseInstanceInTheListIsRejectedByTheHelpersDecoder) {
    EXPECT_EQ(sent(CommandConcrete("d")), nullptr);
    EXPECT_NE(refusal_.find("_TtC13InstallCommon15CommandConcrete"), std::string::npos) << refusal_;
    EXPECT_EQ(sent(LaunchdJobCommand("d", kJob, true)), nullptr);
    EXPECT_NE(refusal_.find("_TtC13InstallCommon17LaunchdJobCommand"), std::string::npos) << refusal_;
}

}  // namespace
