#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/InstallerLine.h"
#include "support/ProductMac.h"

namespace {

using TestSupport::installerLine;
using namespace SystemTests;
using Lines = std::vector<std::string>;
using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;

TEST(SilentUninstallation, OfTheCurrentAndEveryEarlierGenerationLeavesNothingOfTheProduct) {
    ProductMac mac({"--installed", "all", "--users", "alice:501,bob:502,carol:503", "--running",
                    "Sentrel,View Logs,NORVIK Antivirus"});
    const auto result = mac.uninstall();
    EXPECT_EQ(result.status, 0) << result.err;
    mac.expectClean();
    EXPECT_EQ(mac.uninstallerLog(), kSuccess);
    const Lines log = mac.log();
    ASSERT_GE(log.size(), 2U);
    EXPECT_TRUE(log[log.size() - 2].ends_with("]: Uninstallation finished")) << log[log.size() - 2];
    EXPECT_TRUE(log.back().ends_with("]: [SNTM Installer] Uninstallation finished.")) << log.back();
}

TEST(SilentUninstallation, RemovesNothingElse) {
    ProductMac mac({"--installed", "all"});
    mac.putBystanders();
    EXPECT_EQ(mac.uninstall().status, 0);
    ProductMac bare({});
    bare.putBystanders();
    EXPECT_EQ(bare.shell("true").status, 0);
    EXPECT_EQ(mac.inventory(), bare.inventory());
}

class GenerationAlone : public testing::TestWithParam<const char*> {};

TEST_P(GenerationAlone, IsRemovedWhole) {
    ProductMac mac({"--installed", GetParam()});
    mac.putUninstaller("/Users/alice/Downloads");
    const auto result =
        mac.run({}, {"/Users/alice/Downloads/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel", "-s"});
    EXPECT_EQ(result.status, 0) << result.err;
    mac.expectClean();
    EXPECT_EQ(mac.uninstallerLog().back(), installerLine("Uninstallation finished."));
}

std::string generationName(const testing::TestParamInfo<const char*>& info) {
    std::string name = info.param;
    std::erase(name, '-');
    return name;
}

constexpr const char* kGenerations[] = {"norvik-apps", "antivir",    "antivirus", "snt-plain",
                                        "snt-folder",  "snt-bundle", "current"};

INSTANTIATE_TEST_SUITE_P(SilentUninstallation, GenerationAlone, testing::ValuesIn(kGenerations),
                         generationName);

TEST(SilentUninstallation, IsTestedForEveryGenerationThatThereIs) {
    std::string known;
    for (const char* generation : kGenerations) {
        known += std::string(generation) + "\n";
    }
    EXPECT_EQ(TestSupport::runProgram({TestSupport::SimulatedMac::macsim(), "list-generations"}).out, known);
}

TEST(SilentUninstallation, ExecutesEveryCommandInOrder) {
    ProductMac mac({"--installed", "current"});
    EXPECT_EQ(mac.uninstall().status, 0);
    const Lines log = mac.helperLog();
    EXPECT_THAT(log, Contains(installerLine("Disable & bootout agent com.norvik.TrayMenu for 0")));
    EXPECT_THAT(log, Contains(installerLine("Disable & bootout agent com.norvik.NorvikAgent for 501")));
    Lines removed;
    for (const std::string& line : log) {
        if (line.starts_with(installerLine("Removed at "))) {
            removed.push_back(line.substr(28));
        }
    }
    const auto at = [&removed](const std::string& path) {
        return std::find(removed.begin(), removed.end(), path) - removed.begin();
    };
    const Lines inOrder{"/Applications/Sentrel.app",
                        "/Library/Services/Scan with Sentrel.workflow",
                        "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
                        "/Library/LaunchDaemons/com.norvik.containmentd.plist",
                        "/Library/Application Support/NORVIK/SNT",
                        "/Users/Shared/Norvik",
                        "/Library/Application Support/NORVIK",
                        "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper",
                        "/Library/LaunchDaemons/com.norvik.InstallerHelper.plist"};
    EXPECT_THAT(removed, IsSupersetOf(inOrder));
    for (std::size_t i = 1; i < inOrder.size(); ++i) {
        EXPECT_LT(at(inOrder[i - 1]), at(inOrder[i])) << inOrder[i];
    }
}

TEST(SilentUninstallation, KillsRunningApplicationsAndSaysSo) {
    ProductMac mac({"--installed", "current", "--running", "Sentrel"});
    EXPECT_EQ(mac.uninstall().status, 0);
    EXPECT_THAT(mac.helperLog(),
                Contains(testing::MatchesRegex("\\[SNTM Installer\\] Kill result for pid [0-9]+: 0")));
    EXPECT_THAT(mac.processes(), Not(Contains("Sentrel")));
}

TEST(SilentUninstallation, ASecondRunFromElsewhereFindsNothing) {
    ProductMac mac({"--installed", "current"});
    mac.putUninstaller("/Users/alice/Downloads");
    const std::string elsewhere =
        "/Users/alice/Downloads/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel";
    EXPECT_EQ(mac.run({}, {elsewhere, "--silent"}).status, 0);
    mac.expectClean();
    EXPECT_EQ(mac.run({}, {elsewhere, "--silent"}).status, 0);
    const Lines log = mac.uninstallerLog();
    ASSERT_EQ(log.size(), 5U);
    EXPECT_EQ(log[3], "Antivirus cannot be uninstalled");
    EXPECT_EQ(log[4], installerLine("Uninstallation failed."));
}

TEST(SilentUninstallation, AKextInUseIsLoggedAndTheRunGoesOn) {
    ProductMac mac({"--installed", "current"});
    EXPECT_EQ(mac.uninstall({"kext-busy"}).status, 0);
    EXPECT_THAT(mac.helperLog(),
                Contains(testing::MatchesRegex("\\[SNTM Installer\\] Kext FileAccessFilter.kext unload "
                                               "failed. Return code: -[0-9a-f]+")));
    EXPECT_EQ(mac.uninstallerLog(), kSuccess);
    EXPECT_TRUE(mac.state().at("productPaths").empty());
}

TEST(SilentUninstallation, AFailingLaunchctlVerbIsLoggedAndTheRunGoesOn) {
    ProductMac mac({"--installed", "current"});
    EXPECT_EQ(mac.uninstall({"launchctl-fail=bootout"}).status, 0);
    EXPECT_THAT(mac.helperLog(),
                Contains("[SNTM Installer]\nError description: Boot-out failed: 5: Input/output "
                         "error\n;\ntermination status: 5;\ntermination reason: exit."));
    EXPECT_EQ(mac.uninstallerLog(), kSuccess);
    EXPECT_TRUE(mac.state().at("productPaths").empty());
}

TEST(SilentUninstallation, AnItemThatCannotBeRemovedIsLoggedAndEverythingElseGoes) {
    ProductMac mac({"--installed", "current"});
    const std::string stuck = "/Library/Application Support/NORVIK/SNT/settings.plist";
    EXPECT_EQ(mac.uninstall({"immutable=" + stuck}).status, 0);
    EXPECT_THAT(mac.helperLog(), Contains(installerLine("Error removing: \"") + stuck +
                                          "\" could not be removed: Operation not permitted"));
    EXPECT_EQ(mac.uninstallerLog(), kSuccess);
    EXPECT_TRUE(mac.exists(stuck));
    EXPECT_FALSE(mac.exists("/Library/Application Support/NORVIK/SNT/bases.nvb"));
    EXPECT_FALSE(mac.exists("/Applications/Sentrel.app"));
}

}  // namespace
