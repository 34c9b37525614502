// The 73 + 2 commands in full: class, description, operands, order. This list is intentionally written out by
// hand; anybody who changes a suite changes it here too, and sees what it means.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "InstallCommon/CommandSuitsProvider.h"
#include "support/CommandText.h"
#include "support/FakeMac.h"

namespace {

using InstallCommon::CommandSuitsProvider;
using TestSupport::commandTexts;

const std::vector<std::string>& expectedUninstallCommands() {
    static const std::vector<std::string> kList{
        "StopLaunchdJobCommand|Unloading daemon com.norvik.containmentd...|daemon com.norvik.containmentd "
        "/Library/LaunchDaemons/com.norvik.containmentd.plist",
        "StopLaunchdJobCommand|Unloading daemon com.norvik.fileaccessd...|daemon com.norvik.fileaccessd "
        "/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
        "StopLaunchdJobCommand|Unloading daemon com.norvik.fileaccessdaemon...|daemon "
        "com.norvik.fileaccessdaemon /Library/LaunchDaemons/com.norvik.fileaccessdaemon.plist",
        "StopLaunchdJobCommand|Unloading daemon com.norvik.FileAccessDaemon...|daemon "
        "com.norvik.FileAccessDaemon /Library/LaunchDaemons/com.norvik.FileAccessDaemon.plist",
        "StopLaunchdJobCommand|Unloading daemon com.norvik.fileaccessd...|daemon com.norvik.fileaccessd "
        "/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
        "StopLaunchdJobCommand|Unloading daemon com.norvik.containmentd...|daemon com.norvik.containmentd "
        "/Library/LaunchDaemons/com.norvik.containmentd.plist",
        "StopLaunchdJobCommand|Unloading user agent com.norvik.TrayMenu...|agent com.norvik.TrayMenu "
        "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "StopLaunchdJobCommand|Unloading user agent com.norvik.NorvikAgent...|agent com.norvik.NorvikAgent "
        "/Library/LaunchAgents/com.norvik.NorvikAgent.plist",
        "StopLaunchdJobCommand|Unloading user agent com.norvik.Agent...|agent com.norvik.Agent "
        "/Library/LaunchAgents/com.norvik.Agent.plist",
        "StopLaunchdJobCommand|Unloading user agent com.norvik.TrayMenu...|agent com.norvik.TrayMenu "
        "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "StopLaunchdJobCommand|Unloading user agent com.norvik.Agent...|agent com.norvik.Agent "
        "/Library/LaunchAgents/com.norvik.Agent.plist",
        "StopLaunchdJobCommand|Unloading user agent com.norvik.TrayMenu...|agent com.norvik.TrayMenu "
        "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "StopLaunchdJobCommand|Unloading user agent com.norvik.Agent...|agent com.norvik.Agent "
        "/Library/LaunchAgents/com.norvik.Agent.plist",
        "StopLaunchdJobCommand|Unloading user agent com.norvik.TrayMenu...|agent com.norvik.TrayMenu "
        "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "StopLaunchdJobCommand|Unloading user agent com.norvik.Agent...|agent com.norvik.Agent "
        "/Library/LaunchAgents/com.norvik.Agent.plist",
        "StopLaunchdJobCommand|Unloading user agent com.norvik.TrayMenu...|agent com.norvik.TrayMenu "
        "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "UnloadKextCommand|Unloading KEXT FileAccessFilter.kext...|FileAccessFilter.kext "
        "/Library/Extensions/FileAccessFilter.kext com.norvik.kext.FileAccessFilter FileAccessFilter",
        "UnloadKextCommand|Unloading KEXT FileAccessFilter.kext...|FileAccessFilter.kext "
        "/Applications/Sentrel.app/Contents/Private/FileAccessDaemon.bundle/Contents/Resources/"
        "FileAccessFilter.kext com.norvik.kext.FileAccessFilter FileAccessFilter",
        "KillProcessCommand|Closing user application Sentrel...|Sentrel",
        "KillProcessCommand|Closing user application Run Diagnostics...|Run Diagnostics",
        "KillProcessCommand|Closing user application Software Update...|Software Update",
        "KillProcessCommand|Closing user application View Logs...|View Logs",
        "KillProcessCommand|Closing user application NORVIK Scanner...|NORVIK Scanner",
        "KillProcessCommand|Closing user application Sentrel Scanner...|Sentrel Scanner",
        "KillProcessCommand|Closing user application Run Diagnostics...|Run Diagnostics",
        "KillProcessCommand|Closing user application Software Update...|Software Update",
        "KillProcessCommand|Closing user application View Logs...|View Logs",
        "KillProcessCommand|Closing user application NORVIK Scanner...|NORVIK Scanner",
        "KillProcessCommand|Closing user application Sentrel Scanner...|Sentrel Scanner",
        "KillProcessCommand|Closing user application NORVIK Antivirus...|NORVIK Antivirus",
        "RemoveCommand|Deleting user application Sentrel.app...|/Applications/Sentrel.app",
        "RemoveCommand|Deleting user application Run Diagnostics.app...|/Applications/Norvik/Run "
        "Diagnostics.app",
        "RemoveCommand|Deleting user application Software Update.app...|/Applications/Norvik/Software "
        "Update.app",
        "RemoveCommand|Deleting user application View Logs.app...|/Applications/Norvik/View Logs.app",
        "RemoveCommand|Deleting user application NORVIK Scanner.app...|/Applications/Norvik/NORVIK "
        "Scanner.app",
        "RemoveCommand|Deleting user application Sentrel Scanner.app...|/Applications/Norvik/Sentrel "
        "Scanner.app",
        "RemoveCommand|Deleting user application Run Diagnostics.app...|/Applications/NORVIK/SNT/Run "
        "Diagnostics.app",
        "RemoveCommand|Deleting user application Software Update.app...|/Applications/NORVIK/SNT/Software "
        "Update.app",
        "RemoveCommand|Deleting user application View Logs.app...|/Applications/NORVIK/SNT/View Logs.app",
        "RemoveCommand|Deleting user application NORVIK Scanner.app...|/Applications/NORVIK/SNT/NORVIK "
        "Scanner.app",
        "RemoveCommand|Deleting user application Sentrel Scanner.app...|/Applications/NORVIK/SNT/Sentrel "
        "Scanner.app",
        "RemoveCommand|Deleting user application Sentrel.app...|/Applications/Norvik/Sentrel.app",
        "RemoveCommand|Deleting resource Scan with Sentrel.workflow...|/Library/Services/Scan with "
        "Sentrel.workflow",
        "RemoveCommand|Deleting resource Scan with NORVIK Antivirus.workflow...|/Library/Services/Scan with "
        "NORVIK Antivirus.workflow",
        "RemoveCommand|Deleting KEXT FileAccessFilter.kext...|/Library/Extensions/FileAccessFilter.kext",
        "RemoveCommand|Deleting user agent Agent...|/Library/Application Support/Norvik/AntiVir/Agent.app",
        "RemoveCommand|Deleting user agent TrayMenu...|/Library/Application "
        "Support/Norvik/AntiVir/TrayMenu.app",
        "RemoveCommand|Deleting user agent Agent...|/Library/Application Support/Norvik/Antivirus/Agent.app",
        "RemoveCommand|Deleting user agent TrayMenu...|/Library/Application "
        "Support/Norvik/Antivirus/TrayMenu.app",
        "RemoveCommand|Deleting user agent Agent...|/Library/Application "
        "Support/NORVIK/SNT/FileAccessDaemon/Agent.app",
        "RemoveCommand|Deleting user agent TrayMenu...|/Library/Application "
        "Support/NORVIK/SNT/FileAccessDaemon/TrayMenu.app",
        "RemoveCommand|Deleting user agent Agent...|/Applications/NORVIK/SNT/Agent.app",
        "RemoveCommand|Deleting user agent TrayMenu...|/Applications/NORVIK/SNT/TrayMenu.app",
        "RemoveCommand|Deleting daemon fileaccessd...|/Library/Application "
        "Support/NORVIK/SNT/FileAccessDaemon.bundle",
        "RemoveCommand|Deleting daemon containmentd...|/Library/Application "
        "Support/NORVIK/SNT/ContainmentDaemon.bundle",
        "RemoveCommand|Deleting daemon FileAccessDaemon...|/Library/Application "
        "Support/Norvik/AntiVirus/FileAccessDaemon",
        "RemoveCommand|Deleting daemon FileAccessDaemon...|/Library/Application "
        "Support/NORVIK/SNT/FileAccessDaemon",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.TrayMenu...|/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.NorvikAgent...|/Library/LaunchAgents/com.norvik.NorvikAgent.plist",
        "RemoveCommand|Deleting launchd job com.norvik.Agent...|/Library/LaunchAgents/com.norvik.Agent.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.TrayMenu...|/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "RemoveCommand|Deleting launchd job com.norvik.Agent...|/Library/LaunchAgents/com.norvik.Agent.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.TrayMenu...|/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "RemoveCommand|Deleting launchd job com.norvik.Agent...|/Library/LaunchAgents/com.norvik.Agent.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.TrayMenu...|/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "RemoveCommand|Deleting launchd job com.norvik.Agent...|/Library/LaunchAgents/com.norvik.Agent.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.TrayMenu...|/Library/LaunchAgents/com.norvik.TrayMenu.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.containmentd...|/Library/LaunchDaemons/com.norvik.containmentd.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.fileaccessd...|/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.fileaccessdaemon...|/Library/LaunchDaemons/com.norvik.fileaccessdaemon.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.FileAccessDaemon...|/Library/LaunchDaemons/com.norvik.FileAccessDaemon.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.fileaccessd...|/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
        "RemoveCommand|Deleting launchd job "
        "com.norvik.containmentd...|/Library/LaunchDaemons/com.norvik.containmentd.plist",
    };
    return kList;
}

const std::vector<std::string>& expectedCleanupCommands() {
    static const std::vector<std::string> kList{
        "RemoveCommand|Deleting support files and directories...|"
        "/Library/Application Support/NORVIK/SNT, /Users/Shared/Norvik, /Library/Application Support/NORVIK, "
        "/Library/Application Support/Norvik/AntiVir, /Library/Application Support/Norvik/Antivirus, "
        "/Library/Application Support/NORVIK/SNT/FileAccessDaemon, /Applications/NORVIK/SNT, "
        "/Library/Application Support/Norvik, /Applications/Norvik, /Applications/NORVIK",
        // The order of the tools means nothing; this is the one that the list has.
        "RemoveCommand|Deleting auxiliary helper tools...|"
        "/Library/PrivilegedHelperTools/com.norvik.DiagnosticUtilityHelper, "
        "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper, "
        "/Library/PrivilegedHelperTools/com.norvik.SolutionUpdaterHelper, "
        "/Library/PrivilegedHelperTools/com.norvik.UninstallerHelper, "
        "/Library/LaunchDaemons/com.norvik.DiagnosticUtilityHelper.plist, "
        "/Library/LaunchDaemons/com.norvik.InstallerHelper.plist, "
        "/Library/LaunchDaemons/com.norvik.SolutionUpdaterHelper.plist, "
        "/Library/LaunchDaemons/com.norvik.UninstallerHelper.plist",
    };
    return kList;
}

TEST(UninstallSuite, IsThisListOf73Commands) {
    const TestSupport::FakeMac mac;
    const auto texts = commandTexts(CommandSuitsProvider::makeUninstallCommands());
    EXPECT_EQ(texts.size(), 73U);
    EXPECT_EQ(texts, expectedUninstallCommands());
}

TEST(CleanupSuite, IsThisListOfTwoCommandsWithTenAndEightItems) {
    const TestSupport::FakeMac mac;
    EXPECT_EQ(commandTexts(CommandSuitsProvider::makeCleanupCommands()), expectedCleanupCommands());
}

TEST(UninstallSuite, FirstStopsContainmentdAndThe17thUnloadsTheKextInLibraryExtensions) {
    const TestSupport::FakeMac mac;
    const auto commands = CommandSuitsProvider::makeUninstallCommands();
    EXPECT_EQ(commands.at(0)->commandDescription(), "Unloading daemon com.norvik.containmentd...");
    EXPECT_EQ(commands.at(16)->commandDescription(), "Unloading KEXT FileAccessFilter.kext...");
    EXPECT_NE(commandTexts(commands).at(16).find(" /Library/Extensions/FileAccessFilter.kext "),
              std::string::npos);
}

TEST(UninstallSuite, The19thClosesSentrel) {
    const TestSupport::FakeMac mac;
    EXPECT_EQ(commandTexts(CommandSuitsProvider::makeUninstallCommands()).at(18),
              "KillProcessCommand|Closing user application Sentrel...|Sentrel");
}

TEST(UninstallSuite, FirstDeletionRemovesTheConsoleAlone) {
    const TestSupport::FakeMac mac;
    EXPECT_EQ(commandTexts(CommandSuitsProvider::makeUninstallCommands()).at(30),
              "RemoveCommand|Deleting user application Sentrel.app...|/Applications/Sentrel.app");
}

TEST(UninstallSuite, DescribesTheTwoWorkflowDeletions) {
    const TestSupport::FakeMac mac;
    const auto commands = CommandSuitsProvider::makeUninstallCommands();
    EXPECT_EQ(commands.at(42)->commandDescription(), "Deleting resource Scan with Sentrel.workflow...");
    EXPECT_EQ(commands.at(43)->commandDescription(),
              "Deleting resource Scan with NORVIK Antivirus.workflow...");
}

TEST(UninstallSuite, LastDeletesContainmentdsPropertyList) {
    const TestSupport::FakeMac mac;
    EXPECT_EQ(commandTexts(CommandSuitsProvider::makeUninstallCommands()).back(),
              "RemoveCommand|Deleting launchd job com.norvik.containmentd...|"
              "/Library/LaunchDaemons/com.norvik.containmentd.plist");
}

TEST(UninstallSuite, EveryCommandWeighsOne) {
    const TestSupport::FakeMac mac;
    for (const auto& command : CommandSuitsProvider::makeUninstallCommands()) {
        EXPECT_EQ(command->weight(), 1);
    }
    for (const auto& command : CommandSuitsProvider::makeCleanupCommands()) {
        EXPECT_EQ(command->weight(), 1);
    }
}

TEST(UninstallSuite, TwoCallsGiveEqualListsOfDistinctObjects) {
    const TestSupport::FakeMac mac;
    const auto first = CommandSuitsProvider::makeUninstallCommands();
    const auto second = CommandSuitsProvider::makeUninstallCommands();
    EXPECT_EQ(commandTexts(first), commandTexts(second));
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_NE(first[i].get(), second[i].get());
    }
}

TEST(UninstallSuite, DoesNotLookAtTheDisk) {
    const TestSupport::FakeMac mac;
    static_cast<void>(CommandSuitsProvider::makeUninstallCommands());
    static_cast<void>(CommandSuitsProvider::makeCleanupCommands());
    EXPECT_EQ(mac.calls, TestSupport::CallList());
    EXPECT_EQ(mac.log.lines, std::vector<std::string>());
}

}  // namespace
