#include <gtest/gtest.h>

#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"
#include "support/FakeMac.h"

namespace {

using namespace NorvikCommon;

class ComponentPathProviderTest : public testing::Test {
  protected:
    TestSupport::FakeMac mac_;
};

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

}  // namespace
