#include <gtest/gtest.h>

#include <thread>

#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"
#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "support/FakeMac.h"

namespace {

using namespace NorvikCommon;

class PathProviders : public testing::Test {
  protected:
    TestSupport::FakeMac mac_;
};

using SystemPathProviderTest = PathProviders;
using ComponentPathProviderTest = PathProviders;
using FeaturePathProviderTest = PathProviders;
using LegacyComponentsTest = PathProviders;

TEST_F(SystemPathProviderTest, NamesTheSystemsPlaces) {
    EXPECT_EQ(SystemPathProvider::daemonsPlists().path(), "/Library/LaunchDaemons");
    EXPECT_EQ(SystemPathProvider::userAgentsPlists().path(), "/Library/LaunchAgents");
    EXPECT_EQ(SystemPathProvider::extensions().path(), "/Library/Extensions");
    EXPECT_EQ(SystemPathProvider::lsRegisterDatabase().path(),
              "/System/Library/Frameworks/CoreServices.framework/Frameworks/LaunchServices.framework/Support/"
              "lsregister");
    EXPECT_EQ(SystemPathProvider::launchctlExecutable().path(), "/bin/launchctl");
    EXPECT_EQ(SystemPathProvider::localApplications().path(), "/Applications");
    EXPECT_EQ(SystemPathProvider::localApplicationSupport().path(), "/Library/Application Support");
}

void expectApp(const ApplicationInfo& app, const std::string& bundle, const std::string& executable,
               const std::string& bundleId) {
    EXPECT_EQ(app.bundle->location->path(), bundle);
    EXPECT_EQ(app.executable->location->path(), executable);
    EXPECT_EQ(app.bundle->bundleId, bundleId);
}

TEST_F(ComponentPathProviderTest, ConsoleLiesInApplications) {
    EXPECT_EQ(ComponentPathProvider::productName, "Sentrel");
    expectApp(ComponentPathProvider::managementConsole(), "/Applications/Sentrel.app",
              "/Applications/Sentrel.app/Contents/MacOS/Sentrel", "com.NORVIK.Sentrel");
}

TEST_F(ComponentPathProviderTest, DiagnosticsViewLogsAndUninstallerLieUnderContentsApplications) {
    const std::string folder = "/Applications/Sentrel.app/Contents/Applications/";
    expectApp(ComponentPathProvider::diagnostics(), folder + "Run Diagnostics.app",
              folder + "Run Diagnostics.app/Contents/MacOS/Run Diagnostics", "com.NORVIK.DiagnosticUtil");
    expectApp(ComponentPathProvider::viewLogs(), folder + "View Logs.app",
              folder + "View Logs.app/Contents/MacOS/View Logs", "com.NORVIK.View-Logs");
    expectApp(ComponentPathProvider::uninstaller(), folder + "Uninstall Sentrel.app",
              folder + "Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel",
              "com.NORVIK.Uninstall-NORVIK-Antivirus");
}

TEST_F(ComponentPathProviderTest, ScannerLiesUnderContentsPrivate) {
    expectApp(ComponentPathProvider::scanner(),
              "/Applications/Sentrel.app/Contents/Private/NORVIK Scanner.app",
              "/Applications/Sentrel.app/Contents/Private/NORVIK Scanner.app/Contents/MacOS/NORVIK Scanner",
              "com.NORVIK.NORVIK-Scanner");
}

void expectJob(const BundleDaemonInfo& daemon, const std::string& bundle, const std::string& executable,
               const std::string& bundleId, const std::string& label, const std::string& plist) {
    expectApp(*daemon.app, bundle, executable, bundleId);
    EXPECT_EQ(daemon.launchd->label, label);
    EXPECT_EQ(daemon.launchd->plistLocation()->path(), plist);
}

TEST_F(ComponentPathProviderTest, DaemonsAreBundlesInsideTheConsole) {
    const std::string folder = "/Applications/Sentrel.app/Contents/Private/";
    expectJob(ComponentPathProvider::fileAccessDaemon(), folder + "FileAccessDaemon.bundle",
              folder + "FileAccessDaemon.bundle/Contents/MacOS/fileaccessd", "com.norvik.FileAccessDaemon",
              "com.norvik.fileaccessd", "/Library/LaunchDaemons/com.norvik.fileaccessd.plist");
    expectJob(ComponentPathProvider::containmentDaemon(), folder + "ContainmentDaemon.bundle",
              folder + "ContainmentDaemon.bundle/Contents/MacOS/containmentd", "com.norvik.ContainmentDaemon",
              "com.norvik.containmentd", "/Library/LaunchDaemons/com.norvik.containmentd.plist");
}

TEST_F(ComponentPathProviderTest, AgentsAreAppsInsideTheConsoleAndMixBothFormsOfTheMakersName) {
    const std::string folder = "/Applications/Sentrel.app/Contents/Private/";
    expectJob(ComponentPathProvider::userAgent(), folder + "NorvikAgent.app",
              folder + "NorvikAgent.app/Contents/MacOS/NorvikAgent", "com.norvik.NorvikAgent",
              "com.norvik.NorvikAgent", "/Library/LaunchAgents/com.norvik.NorvikAgent.plist");
    expectJob(ComponentPathProvider::trayMenu(), folder + "TrayMenu.app",
              folder + "TrayMenu.app/Contents/MacOS/TrayMenu", "com.NORVIK.TrayMenu", "com.norvik.TrayMenu",
              "/Library/LaunchAgents/com.norvik.TrayMenu.plist");
}

TEST_F(ComponentPathProviderTest, KextStaysInsideTheDaemonsBundle) {
    const KextInfo kext = ComponentPathProvider::fileAccessFilterKext();
    EXPECT_EQ(kext.bundle->location->path(),
              "/Applications/Sentrel.app/Contents/Private/FileAccessDaemon.bundle/Contents/Resources/"
              "FileAccessFilter.kext");
    EXPECT_EQ(kext.bundle->bundleId, "com.norvik.kext.FileAccessFilter");
    EXPECT_EQ(kext.ioClassName, "FileAccessFilter");
}

TEST_F(ComponentPathProviderTest, DataFoldersAndWorkflow) {
    EXPECT_EQ(ComponentPathProvider::allNorvikProductsAppSupport().path(),
              "/Library/Application Support/NORVIK");
    EXPECT_EQ(ComponentPathProvider::productAppSupport().path(), "/Library/Application Support/NORVIK/SNT");
    EXPECT_EQ(ComponentPathProvider::workflow().path(), "/Library/Services/Scan with Sentrel.workflow");
}

TEST_F(ComponentPathProviderTest, WhoeverChangesARecordChangesNoOtherCallersRecord) {
    const ApplicationInfo before = ComponentPathProvider::managementConsole();
    auto&& mine = ComponentPathProvider::managementConsole();
    mine.bundle->name = "another";
    EXPECT_EQ(ComponentPathProvider::managementConsole(), before);
}

TEST_F(FeaturePathProviderTest, NamesTheFilesOfTheDataFolder) {
    const std::string folder = "/Library/Application Support/NORVIK/SNT/";
    EXPECT_EQ(FeaturePathProvider::quarantineFolder().path(), folder + "Quarantine");
    EXPECT_EQ(FeaturePathProvider::quarantineDatabase().path(), folder + "quarantine.db");
    EXPECT_EQ(FeaturePathProvider::settingsPlist().location->path(), folder + "settings.plist");
    EXPECT_EQ(FeaturePathProvider::settingsPlist().name, "settings.plist");
    EXPECT_EQ(FeaturePathProvider::avBases().location->path(), folder + "bases.nvb");
    EXPECT_EQ(FeaturePathProvider::repairFolder().path(), folder + "Repair");
    EXPECT_EQ(FeaturePathProvider::logDirectory().path(), folder + "Logs");
    EXPECT_EQ(FeaturePathProvider::logFileExtension, "log");
    EXPECT_EQ(FeaturePathProvider::containmentServiceFolder().path(), folder + "ContainmentRoot");
    EXPECT_EQ(FeaturePathProvider::preferencesFolder().path(), "/Users/Shared/Norvik");
}

TEST_F(FeaturePathProviderTest, ThreeStoragesShareOneFile) {
    const std::string file = "/Library/Application Support/NORVIK/SNT/filerating.db";
    EXPECT_EQ(FeaturePathProvider::flsStorage().path(), file);
    EXPECT_EQ(FeaturePathProvider::verdictStorage().path(), file);
    EXPECT_EQ(FeaturePathProvider::fileRatingStorage().path(), file);
}

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
