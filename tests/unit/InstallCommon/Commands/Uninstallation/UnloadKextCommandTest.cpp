#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "NorvikCommon/PMProcessMonitor.h"
#include "support/FakeMac.h"
#include "unit/InstallCommon/CommandArchives.h"

namespace {

using InstallCommon::KillProcessCommand;
using InstallCommon::UnloadKextCommand;
using NorvikCommon::KextInfo;
using TestSupport::afterTheWire;
using TestSupport::CallList;
using TestSupport::FakeMac;
using TestSupport::ForeignCommand;

// KillProcessCommand

TEST(KillProcessCommand, HasWeightOneAndKeepsNameAndDescription) {
    const KillProcessCommand command("Closing TrayMenu...", "TrayMenu");

    EXPECT_EQ(command.process(), "TrayMenu");
    EXPECT_EQ(command.commandDescription(), "Closing TrayMenu...");
    EXPECT_EQ(command.weight(), 1);
}

TEST(KillProcessCommand, DoesNothingAndLogsNothingForANameWithNoRunningProcess) {
    FakeMac mac;
    mac.processes.processes = {{7, 501, "finder", "/finder"}, {8, 501, "Finder Sync", "/sync"}};

    KillProcessCommand("", "Finder").execute();

    EXPECT_EQ(mac.callsOf("kill"), CallList{});
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(KillProcessCommand, SendsSignalNineToBothProcessesOfTheNameInTheMonitorsOrder) {
    FakeMac mac;
    mac.processes.processes = {
        {9, 501, "TrayMenu", "/TrayMenu"}, {3, 501, "other", "/other"}, {4, 502, "TrayMenu", "/TrayMenu"}};

    KillProcessCommand("", "TrayMenu").execute();

    CallList kills;
    CallList lines;
    for (const auto& process :
         NorvikCommon::PMProcessMonitor::defaultMonitor().allProcessesWithName("TrayMenu")) {
        kills.push_back("kill " + std::to_string(process.pid) + " 9");
        lines.push_back("[SNTM Installer] Kill result for pid " + std::to_string(process.pid) + ": 0");
    }
    EXPECT_EQ(kills.size(), 2U);
    EXPECT_EQ(mac.callsOf("kill"), kills);
    EXPECT_EQ(mac.log.lines, lines);
}

TEST(KillProcessCommand, KeepsItsNameUnderTheKeyOfTheKextCommandOnTheWire) {
    const ForeignCommand archived(KillProcessCommand::staticClass(), [](Base::Coder& coder) {
        coder.encodeString("kext", "TrayMenu");
        coder.encodeString("commandDescription", "Closing...");
    });

    const auto command = afterTheWire<KillProcessCommand>(archived);
    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->process(), "TrayMenu");
    EXPECT_EQ(command->commandDescription(), "Closing...");

    const KillProcessCommand sent("Closing...", "TrayMenu");
    const std::vector<const Base::CodedObject*> byHand{&archived};
    const std::vector<const Base::CodedObject*> bySelf{&sent};
    EXPECT_EQ(Base::archivedArray(bySelf), Base::archivedArray(byHand));
}

TEST(KillProcessCommand, DecodesOnlyWithItsNameUnderKextAsAStringAndWithADescription) {
    const std::vector<std::function<void(Base::Coder&)>> faults{
        [](Base::Coder& coder) {
            coder.encodeString("process", "TrayMenu");
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) {
            coder.encodeObject("kext", Base::CodedRecord(KextInfo::kextWithName("a", "b")));
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) { coder.encodeString("kext", "TrayMenu"); }};
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const ForeignCommand archived(KillProcessCommand::staticClass(), faults[i]);
        EXPECT_EQ(afterTheWire<KillProcessCommand>(archived), nullptr) << i;
    }
}

// UnloadKextCommand

KextInfo filter() {
    return KextInfo::kextWithName("FileAccessFilter", "com.norvik.kext.FileAccessFilter");
}

TEST(UnloadKextCommand, HasWeightOneAndKeepsRecordAndDescription) {
    const UnloadKextCommand command("Unloading...", filter());

    EXPECT_EQ(command.kext(), filter());
    EXPECT_EQ(command.commandDescription(), "Unloading...");
    EXPECT_EQ(command.weight(), 1);
}

TEST(UnloadKextCommand, AsksOnceForTheBundleIdentifierAndLogsNothingForAResultOfZero) {
    FakeMac mac;

    UnloadKextCommand("", filter()).execute();

    EXPECT_EQ(mac.calls, (CallList{"unload com.norvik.kext.FileAccessFilter"}));
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(UnloadKextCommand, LogsAnotherResultInSignedLowerCaseHexadecimal) {
    struct Code {
        std::uint32_t bits;
        std::string text;
    };
    const std::vector<Code> codes{{0x80000001U, "-7fffffff"},
                                  {0xFFFFFFFFU, "-1"},
                                  {5, "5"},
                                  {0x1AU, "1a"},
                                  {0x7FFFFFFFU, "7fffffff"},
                                  {0xDC008017U, "-23ff7fe9"},
                                  {0x80000000U, "-80000000"},
                                  {0x00ABCDEFU, "abcdef"},
                                  {16, "10"}};
    for (const Code& code : codes) {
        FakeMac mac;
        mac.kernelExtensions.result = static_cast<std::int32_t>(code.bits);

        UnloadKextCommand("", filter()).execute();

        EXPECT_EQ(mac.log.lines,
                  (CallList{"[SNTM Installer] Kext FileAccessFilter.kext unload failed. Return code: " +
                            code.text}));
        EXPECT_EQ(mac.calls, (CallList{"unload com.norvik.kext.FileAccessFilter"}));
    }
}

TEST(UnloadKextCommand, PassesAnEmptyBundleIdentifierOn) {
    FakeMac mac;

    UnloadKextCommand("", KextInfo::kextWithName("x", "")).execute();

    EXPECT_EQ(mac.calls, (CallList{"unload "}));
}

TEST(UnloadKextCommand, ExecutesHarmlesslyWithARecordThatLacksKeys) {
    FakeMac mac;
    mac.kernelExtensions.result = 1;
    KextInfo withoutBundle = filter();
    withoutBundle.bundle.reset();
    KextInfo withoutIdentifier = filter();
    withoutIdentifier.bundle->bundleId.reset();

    for (const KextInfo& incomplete : {withoutBundle, withoutIdentifier, KextInfo{}}) {
        const auto command = afterTheWire<UnloadKextCommand>(UnloadKextCommand("", incomplete));
        ASSERT_NE(command, nullptr);
        command->execute();
    }

    EXPECT_EQ(mac.calls, CallList{});
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(UnloadKextCommand, LogsNoNameForABundleWithoutOne) {
    FakeMac mac;
    mac.kernelExtensions.result = 1;
    KextInfo nameless = filter();
    nameless.bundle->name.reset();

    UnloadKextCommand("", nameless).execute();

    EXPECT_EQ(mac.log.lines, (CallList{"[SNTM Installer] Kext  unload failed. Return code: 1"}));
}

TEST(UnloadKextCommand, KeepsItsRecordOnTheWire) {
    const auto command = afterTheWire<UnloadKextCommand>(UnloadKextCommand("Unloading...", filter()));

    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->kext(), filter());
    EXPECT_EQ(command->commandDescription(), "Unloading...");
}

TEST(UnloadKextCommand, DoesNotDecodeWithoutItsRecordOrWithAStringOrWithoutADescription) {
    const std::vector<std::function<void(Base::Coder&)>> faults{
        [](Base::Coder& coder) { coder.encodeString("commandDescription", ""); },
        [](Base::Coder& coder) {
            coder.encodeString("kext", "FileAccessFilter");
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) { coder.encodeObject("kext", Base::CodedRecord(filter())); }};
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const ForeignCommand archived(UnloadKextCommand::staticClass(), faults[i]);
        EXPECT_EQ(afterTheWire<UnloadKextCommand>(archived), nullptr) << i;
    }
}

}  // namespace
