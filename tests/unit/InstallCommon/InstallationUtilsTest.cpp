#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "InstallCommon/InstallationUtils.h"
#include "NorvikCommon/PMProcessMonitor.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;
using InstallCommon::InstallationUtils;
using NorvikCommon::PMProcessMonitor;
using TestSupport::CallList;
using TestSupport::FakeMac;

std::string resultLine(std::int32_t pid, int result) {
    return installerLine("Kill result for pid ") + std::to_string(pid) + ": " + std::to_string(result);
}

const std::string kFailureLine = installerLine("Failed to kill process View Logs. Return code: -1.");

TEST(KillProcess, SendsTwoSignalsAndWritesTwoResultLinesForANameMatchedByTwoProcesses) {
    FakeMac mac;
    mac.processes.processes = {
        {60, 501, "View Logs", "/a"}, {50, 502, "View Logs", "/b"}, {55, 501, "view logs", "/c"}};

    InstallationUtils::killProcess("View Logs");

    CallList kills;
    Lines lines;
    for (const auto& process : PMProcessMonitor::defaultMonitor().allProcessesWithName("View Logs")) {
        kills.push_back({"kill", process.pid, 9});
        lines.push_back(resultLine(process.pid, 0));
    }
    EXPECT_EQ(kills.size(), 2U);
    EXPECT_EQ(mac.callsOf("kill"), kills);
    EXPECT_EQ(mac.log.lines, lines);
}

TEST(KillProcess, GivesMinusOneAndASecondLineForAProcessThatHasAlreadyGone) {
    FakeMac mac;
    mac.processes.processes = {{60, 501, "View Logs", "/a"}};
    static_cast<void>(PMProcessMonitor::defaultMonitor());
    mac.processes.processes.clear();

    InstallationUtils::killProcess("View Logs");

    EXPECT_EQ(mac.callsOf("kill"), (CallList{{"kill", 60, 9}}));
    EXPECT_EQ(mac.log.lines, (Lines{resultLine(60, -1), kFailureLine}));
}

TEST(KillProcess, GoesOnWithTheNextProcessAfterAFailure) {
    FakeMac mac;
    mac.processes.processes = {{60, 0, "View Logs", "/a", false}, {61, 501, "View Logs", "/b", false}};

    InstallationUtils::killProcess("View Logs");

    Lines lines;
    for (const auto& process : PMProcessMonitor::defaultMonitor().allProcessesWithName("View Logs")) {
        lines.push_back(resultLine(process.pid, -1));
        lines.push_back(kFailureLine);
    }
    EXPECT_EQ(lines.size(), 4U);
    EXPECT_EQ(mac.log.lines, lines);
    EXPECT_EQ(mac.callsOf("kill").size(), 2U);
}

TEST(KillProcess, DoesNothingAndLogsNothingWithoutSuchAProcess) {
    FakeMac mac;
    mac.processes.processes = {{60, 501, "View Logs 2", "/View Logs"}};

    InstallationUtils::killProcess("View Logs");

    EXPECT_EQ(mac.callsOf("kill"), CallList{});
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(KillProcess, NeitherWaitsNorLooksASecondTime) {
    FakeMac mac;
    mac.processes.processes = {{60, 501, "View Logs", "/a"}};

    InstallationUtils::killProcess("View Logs");

    EXPECT_EQ(mac.calls, (CallList{{"concurrent queue", "com.merrow.PMMonitor.process-sync"},
                                   {"timer", 0, 1005000000000, 0},
                                   {"listPids", 1, 0},
                                   {"listPids", 1, 1},
                                   {"sync"},
                                   {"sync"},
                                   {"kill", 60, 9}}));
}

TEST(KillProcess, MissesAProcessThatWasStartedAfterTheMonitorsFirstUse) {
    FakeMac mac;
    static_cast<void>(PMProcessMonitor::defaultMonitor());
    mac.processes.processes = {{60, 501, "View Logs", "/a"}};

    InstallationUtils::killProcess("View Logs");

    EXPECT_EQ(mac.callsOf("kill"), CallList{});
    EXPECT_EQ(mac.log.lines, Lines{});
}

}  // namespace
