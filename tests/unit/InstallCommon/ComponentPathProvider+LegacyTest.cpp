#include "InstallCommon/ComponentPathProvider+Legacy.h"

#include <gtest/gtest.h>

#include <thread>

#include "support/FakeMac.h"

namespace {

using namespace NorvikCommon;
using InstallCommon::ComponentPathProvider;

class LegacyComponentsTest : public testing::Test {
  protected:
    TestSupport::FakeMac mac_;
};

std::vector<std::string> paths(const std::vector<Base::URL>& urls) {
    std::vector<std::string> texts;
    for (const Base::URL& url : urls) {
        texts.push_back(url.path());
    }
    return texts;
}

TEST_F(LegacyComponentsTest, FixedPathListsStandInTheirOrder) {
    EXPECT_EQ(
        paths(ComponentPathProvider::legacyInstallationPaths()),
        (std::vector<std::string>{
            "/Library/Application Support/Norvik/AntiVir", "/Library/Application Support/Norvik/Antivirus",
            "/Library/Application Support/NORVIK/SNT/FileAccessDaemon", "/Applications/NORVIK/SNT"}));
    EXPECT_EQ(paths(ComponentPathProvider::legacyProductsPaths()),
              (std::vector<std::string>{"/Library/Application Support/Norvik", "/Applications/Norvik",
                                        "/Applications/NORVIK"}));
    EXPECT_EQ(paths(ComponentPathProvider::legacyWorkflowPaths()),
              (std::vector<std::string>{"/Library/Services/Scan with NORVIK Antivirus.workflow"}));
}

TEST_F(LegacyComponentsTest, KextLiesInLibraryExtensions) {
    ASSERT_EQ(ComponentPathProvider::legacyVersionsFileAccessFilterKexts().size(), 1U);
    const KextInfo& kext = ComponentPathProvider::legacyVersionsFileAccessFilterKexts().front();
    EXPECT_EQ(kext.bundle->location->path(), "/Library/Extensions/FileAccessFilter.kext");
    EXPECT_EQ(kext.ioClassName, "FileAccessFilter");
}

TEST_F(LegacyComponentsTest, FirstPlainDaemonsLabelIsLowerCaseUnlikeItsExecutable) {
    const auto& daemons = ComponentPathProvider::legacyVersionsDaemons();
    ASSERT_EQ(daemons.size(), 2U);
    EXPECT_EQ(daemons[0].executable->location->path(),
              "/Library/Application Support/Norvik/AntiVirus/FileAccessDaemon");
    EXPECT_EQ(daemons[0].launchd->label, "com.norvik.fileaccessdaemon");
    EXPECT_EQ(daemons[0].launchd->plistLocation()->path(),
              "/Library/LaunchDaemons/com.norvik.fileaccessdaemon.plist");
    EXPECT_EQ(daemons[1].executable->location->path(),
              "/Library/Application Support/NORVIK/SNT/FileAccessDaemon");
    EXPECT_EQ(daemons[1].launchd->label, "com.norvik.FileAccessDaemon");
}

TEST_F(LegacyComponentsTest, BundleDaemonsCarryTheCurrentLabels) {
    const auto& daemons = ComponentPathProvider::legacyVersionsBundleDaemons();
    ASSERT_EQ(daemons.size(), 2U);
    EXPECT_EQ(daemons[0].launchd, ComponentPathProvider::fileAccessDaemon().launchd);
    EXPECT_EQ(daemons[1].launchd, ComponentPathProvider::containmentDaemon().launchd);
    EXPECT_EQ(daemons[0].app->bundle->location->path(),
              "/Library/Application Support/NORVIK/SNT/FileAccessDaemon.bundle");
    EXPECT_EQ(daemons[0].app->bundle->bundleId, "com.norvik.FileAccessDaemon");
    EXPECT_EQ(daemons[1].app->bundle->location->path(),
              "/Library/Application Support/NORVIK/SNT/ContainmentDaemon.bundle");
    EXPECT_EQ(daemons[1].app->bundle->bundleId, "com.norvik.ContainmentDaemon");
}

TEST_F(LegacyComponentsTest, UserAgentsAreEightFromAntiVirAgentToSntTrayMenu) {
    const auto agents = ComponentPathProvider::legacyVersionsUserAgents();
    ASSERT_EQ(agents.size(), 8U);
    EXPECT_EQ(agents.front().app->bundle->location->path(),
              "/Library/Application Support/Norvik/AntiVir/Agent.app");
    EXPECT_EQ(agents.front().app->bundle->bundleId, "com.NORVIK.Agent");
    EXPECT_EQ(agents.back().app->bundle->location->path(), "/Applications/NORVIK/SNT/TrayMenu.app");
    EXPECT_EQ(agents.back().app->bundle->bundleId, "com.NORVIK.TrayMenu");
}

TEST_F(LegacyComponentsTest, GuiAppsAreElevenWithTheScannersAtFiveAndTenAndTheAntivirusLast) {
    const auto apps = ComponentPathProvider::legacyVersionsGuiApps();
    ASSERT_EQ(apps.size(), 11U);
    EXPECT_EQ(apps[4].bundle->location->path(), "/Applications/Norvik/Sentrel Scanner.app");
    EXPECT_EQ(apps[4].bundle->bundleId, "com.NORVIK.Sentrel-Scanner");
    EXPECT_EQ(apps[9].bundle->location->path(), "/Applications/NORVIK/SNT/Sentrel Scanner.app");
    EXPECT_EQ(apps[10].executable->location->path(),
              "/Applications/Norvik/Sentrel.app/Contents/MacOS/NORVIK Antivirus");
    EXPECT_EQ(apps[10].bundle->bundleId, "");
    EXPECT_EQ(apps[0].bundle->bundleId, "");
}

TEST_F(LegacyComponentsTest, HelperToolsHoldTheInstallerHelperInWhateverPosition) {
    const auto tools = ComponentPathProvider::auxiliaryHelperTools();
    ASSERT_EQ(tools.size(), 4U);
    int found = 0;
    for (const DaemonInfo& tool : tools) {
        if (tool.executable->location->path() ==
            "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper") {
            ++found;
            EXPECT_EQ(tool.launchd->label, "com.norvik.InstallerHelper");
            EXPECT_EQ(tool.launchd->plistLocation()->path(),
                      "/Library/LaunchDaemons/com.norvik.InstallerHelper.plist");
        }
    }
    EXPECT_EQ(found, 1);
}

TEST_F(LegacyComponentsTest, RepeatedAccessToAFixedListGivesTheSameArray) {
    EXPECT_EQ(&ComponentPathProvider::legacyInstallationPaths(),
              &ComponentPathProvider::legacyInstallationPaths());
    EXPECT_EQ(&ComponentPathProvider::legacyVersionsDaemons(),
              &ComponentPathProvider::legacyVersionsDaemons());
    EXPECT_EQ(&ComponentPathProvider::legacyVersionsBundleDaemons(),
              &ComponentPathProvider::legacyVersionsBundleDaemons());
}

TEST_F(LegacyComponentsTest, ConcurrentFirstUsesGetOneArray) {
    std::vector<const std::vector<Base::URL>*> seen(8);
    std::vector<std::thread> threads;
    for (auto& each : seen) {
        threads.emplace_back([&each] { each = &ComponentPathProvider::legacyInstallationPaths(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto* each : seen) {
        EXPECT_EQ(each, seen.front());
    }
}

}  // namespace
