#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"
#include "unit/InstallCommon/CommandArchives.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;
using InstallCommon::UnloadKextCommand;
using NorvikCommon::KextInfo;
using TestSupport::afterTheWire;
using TestSupport::CallList;
using TestSupport::FakeMac;
using TestSupport::ForeignCommand;

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

    EXPECT_EQ(mac.calls, (CallList{{"unload", "com.norvik.kext.FileAccessFilter"}}));
    EXPECT_EQ(mac.log.lines, Lines{});
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

        EXPECT_EQ(
            mac.log.lines,
            (Lines{installerLine("Kext FileAccessFilter.kext unload failed. Return code: ") + code.text}));
        EXPECT_EQ(mac.calls, (CallList{{"unload", "com.norvik.kext.FileAccessFilter"}}));
    }
}

TEST(UnloadKextCommand, PassesAnEmptyBundleIdentifierOn) {
    FakeMac mac;

    UnloadKextCommand("", KextInfo::kextWithName("x", "")).execute();

    EXPECT_EQ(mac.calls, (CallList{{"unload", ""}}));
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
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(UnloadKextCommand, LogsNoNameForABundleWithoutOne) {
    FakeMac mac;
    mac.kernelExtensions.result = 1;
    KextInfo nameless = filter();
    nameless.bundle->name.reset();

    UnloadKextCommand("", nameless).execute();

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Kext  unload failed. Return code: 1")}));
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
