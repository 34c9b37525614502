#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "NorvikCommon/PMProcessMonitor.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"
#include "unit/InstallCommon/CommandArchives.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;
using InstallCommon::KillProcessCommand;
using NorvikCommon::KextInfo;
using TestSupport::afterTheWire;
using TestSupport::CallList;
using TestSupport::FakeMac;
using TestSupport::ForeignCommand;

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
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(KillProcessCommand, SendsSignalNineToBothProcessesOfTheNameInTheMonitorsOrder) {
    FakeMac mac;
    mac.processes.processes = {
        {9, 501, "TrayMenu", "/TrayMenu"}, {3, 501, "other", "/other"}, {4, 502, "TrayMenu", "/TrayMenu"}};

    KillProcessCommand("", "TrayMenu").execute();

    CallList kills;
    Lines lines;
    for (const auto& process :
         NorvikCommon::PMProcessMonitor::defaultMonitor().allProcessesWithName("TrayMenu")) {
        kills.push_back({"kill", process.pid, 9});
        lines.push_back(installerLine("Kill result for pid ") + std::to_string(process.pid) + ": 0");
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

}  // namespace
