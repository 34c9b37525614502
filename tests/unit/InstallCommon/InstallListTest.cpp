// The install side's commands in full, written out by hand like the uninstall side's.

#include <gtest/gtest.h>

#include "InstallCommon/CommandLists.h"
#include "InstallCommon/CommandSuitsProvider.h"
#include "support/CommandText.h"
#include "support/FakeMac.h"

namespace {

using Base::URL;
using InstallCommon::CommandLists;
using InstallCommon::CommandSuitsProvider;
using TestSupport::commandTexts;
using Lines = std::vector<std::string>;

const URL kApps = URL::fileURL("/P/A");
const URL kJobs = URL::fileURL("/P/J");
const URL kSupport = URL::fileURL("/P/S");

const Lines& preInstall() {
    static const Lines kList{
        "CopyCommand|Installing settings...|/P/S/settings.plist -> /Library/Application "
        "Support/NORVIK/SNT/settings.plist",
        "CopyCommand|Installing AV bases...|/P/S/bases.nvb -> /Library/Application "
        "Support/NORVIK/SNT/bases.nvb",
    };
    return kList;
}

const Lines& install() {
    static const Lines kList{
        "CopyCommand|Installing user application Sentrel.app...|/P/A/Sentrel.app -> "
        "/Applications/Sentrel.app",
        "CopyCommand|Adding launchd job com.norvik.containmentd...|/P/J/com.norvik.containmentd.plist -> "
        "/Library/LaunchDaemons/com.norvik.containmentd.plist",
        "CopyCommand|Adding launchd job com.norvik.fileaccessd...|/P/J/com.norvik.fileaccessd.plist -> "
        "/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
        "CopyCommand|Adding launchd job com.norvik.TrayMenu...|/P/J/com.norvik.TrayMenu.plist -> "
        "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "CopyCommand|Adding launchd job com.norvik.NorvikAgent...|/P/J/com.norvik.NorvikAgent.plist -> "
        "/Library/LaunchAgents/com.norvik.NorvikAgent.plist",
        "CopyCommand|Installing resource Scan with Sentrel.workflow...|/P/S/Scan with Sentrel.workflow -> "
        "/Library/Services/Scan with Sentrel.workflow",
        "StartLaunchdJobCommand|Starting user agent com.norvik.TrayMenu...|agent com.norvik.TrayMenu "
        "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "StartLaunchdJobCommand|Starting user agent com.norvik.NorvikAgent...|agent com.norvik.NorvikAgent "
        "/Library/LaunchAgents/com.norvik.NorvikAgent.plist",
        "StartLaunchdJobCommand|Starting daemon com.norvik.containmentd...|daemon com.norvik.containmentd "
        "/Library/LaunchDaemons/com.norvik.containmentd.plist",
        "StartLaunchdJobCommand|Starting daemon com.norvik.fileaccessd...|daemon com.norvik.fileaccessd "
        "/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
    };
    return kList;
}

const Lines& postInstall() {
    static const Lines kList{"UpdateLaunchServices|Updating system databases...|"};
    return kList;
}

Lines inOneList(std::initializer_list<Lines> pieces) {
    Lines all;
    for (const Lines& piece : pieces) {
        all.insert(all.end(), piece.begin(), piece.end());
    }
    return all;
}

class InstallSuite : public testing::Test {
  protected:
    TestSupport::FakeMac mac_;
    const InstallCommon::PayloadLocations payload_{kApps, kJobs, kSupport};
    const Lines uninstall_ = commandTexts(CommandSuitsProvider::makeUninstallCommands());
    const Lines cleanup_ = commandTexts(CommandSuitsProvider::makeCleanupCommands());
};

TEST_F(InstallSuite, PreInstallIsTwoCopiesSettingsFirstThenTheBases) {
    EXPECT_EQ(commandTexts(CommandSuitsProvider::makePreInstallCommands(kSupport)), preInstall());
}

TEST_F(InstallSuite, InstallIsTheseTenCommands) {
    EXPECT_EQ(commandTexts(CommandSuitsProvider::makeInstallCommands(kApps, kJobs, kSupport)), install());
}

TEST_F(InstallSuite, FirstInstallCommandCopiesTheConsoleFromTheApplicationsLocation) {
    EXPECT_EQ(install().front(),
              commandTexts(CommandSuitsProvider::makeInstallCommands(kApps, kJobs, kSupport)).front());
}

TEST_F(InstallSuite, SecondToFifthCopyTheFourPropertyListsFromTheJobsLocation) {
    const auto commands = CommandSuitsProvider::makeInstallCommands(kApps, kJobs, kSupport);
    EXPECT_EQ(commands.at(1)->commandDescription(), "Adding launchd job com.norvik.containmentd...");
    EXPECT_EQ(commands.at(2)->commandDescription(), "Adding launchd job com.norvik.fileaccessd...");
    EXPECT_EQ(commands.at(3)->commandDescription(), "Adding launchd job com.norvik.TrayMenu...");
    EXPECT_EQ(commands.at(4)->commandDescription(), "Adding launchd job com.norvik.NorvikAgent...");
}

TEST_F(InstallSuite, SeventhStartsTrayMenuAsAnAgentAndTheLastFileaccessdAsADaemon) {
    const Lines commands = commandTexts(CommandSuitsProvider::makeInstallCommands(kApps, kJobs, kSupport));
    EXPECT_EQ(commands.at(6), install().at(6));
    EXPECT_EQ(commands.back(), install().back());
}

TEST_F(InstallSuite, PostInstallRefreshesTheLaunchServicesDatabase) {
    EXPECT_EQ(commandTexts(CommandSuitsProvider::makePostInstallCommands()), postInstall());
}

TEST_F(InstallSuite, EveryCommandWeighsOne) {
    for (const auto& command : CommandLists::cleanInstallation(payload_)) {
        EXPECT_EQ(command->weight(), 1);
    }
}

TEST_F(InstallSuite, CleanInstallationIsPreInstallInstallLaunchServices) {
    EXPECT_EQ(commandTexts(CommandLists::cleanInstallation(payload_)),
              inOneList({preInstall(), install(), postInstall()}));
    EXPECT_EQ(CommandLists::cleanInstallation(payload_).size(), 13U);
}

TEST_F(InstallSuite, UpdateHasNoCleanupAndNoPreInstall) {
    EXPECT_EQ(commandTexts(CommandLists::update(payload_)),
              inOneList({uninstall_, install(), postInstall()}));
}

TEST_F(InstallSuite, OverInstallationIsUninstallCleanupPreInstallInstallLaunchServices) {
    EXPECT_EQ(commandTexts(CommandLists::overInstallation(payload_)),
              inOneList({uninstall_, cleanup_, preInstall(), install(), postInstall()}));
}

TEST_F(InstallSuite, PayloadPartsLieOneComponentBelowItsFolder) {
    const auto payload = InstallCommon::PayloadLocations::inDirectory(URL::fileURL("/P"), "A", "J", "S");
    EXPECT_EQ(payload.applications, kApps);
    EXPECT_EQ(payload.launchdJobs, kJobs);
    EXPECT_EQ(payload.supportFiles, kSupport);
}

}  // namespace
