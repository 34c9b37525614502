#include "KnownProduct.h"

#include <gtest/gtest.h>

#include "ItemText.h"
#include "support/FakeMac.h"

namespace {

using Inventory::KnownItem;
using Inventory::KnownRecord;
using Inventory::Role;
using Lines = std::vector<std::string>;
using NameSet = std::set<std::string>;

class KnownProduct : public testing::Test {
  protected:
    TestSupport::FakeMac mac;
};

TEST_F(KnownProduct, HasItemsWithTheirMeanings) {
    Lines items;
    for (const KnownItem& item : Inventory::knownItems()) {
        std::string line = item.path.path();
        std::string previous;
        for (const KnownRecord& record : item.records) {
            const std::string meaning =
                std::string(nameOf(record.role)) +
                (record.generation.empty() ? "" : " of " + std::string(record.generation)) +
                (record.onlyAs ? std::string(" (") + Inspect::nameOf(*record.onlyAs) + ")" : "");
            line += meaning == previous ? "" : "; " + meaning;
            previous = meaning;
        }
        items.push_back(line);
    }
    EXPECT_EQ(
        items,
        (Lines{"/Applications/Sentrel.app; application of current",
               "/Applications/Norvik/Run Diagnostics.app; application of norvik-apps",
               "/Applications/Norvik/Software Update.app; application of norvik-apps",
               "/Applications/Norvik/View Logs.app; application of norvik-apps",
               "/Applications/Norvik/NORVIK Scanner.app; application of norvik-apps",
               "/Applications/Norvik/Sentrel Scanner.app; application of norvik-apps",
               "/Applications/NORVIK/SNT/Run Diagnostics.app; application of snt-bundle",
               "/Applications/NORVIK/SNT/Software Update.app; application of snt-bundle",
               "/Applications/NORVIK/SNT/View Logs.app; application of snt-bundle",
               "/Applications/NORVIK/SNT/NORVIK Scanner.app; application of snt-bundle",
               "/Applications/NORVIK/SNT/Sentrel Scanner.app; application of snt-bundle",
               "/Applications/Norvik/Sentrel.app; application of norvik-apps",
               "/Library/Services/Scan with Sentrel.workflow; Finder service",
               "/Library/Services/Scan with NORVIK Antivirus.workflow; Finder service",
               "/Library/Extensions/FileAccessFilter.kext; kernel extension of snt-bundle",
               "/Library/Application Support/Norvik/AntiVir/Agent.app; agent of antivir",
               "/Library/Application Support/Norvik/AntiVir/TrayMenu.app; agent of antivir",
               "/Library/Application Support/Norvik/Antivirus/Agent.app; agent of antivirus",
               "/Library/Application Support/Norvik/Antivirus/TrayMenu.app; agent of antivirus",
               "/Library/Application Support/NORVIK/SNT/FileAccessDaemon/Agent.app; agent of snt-folder",
               "/Library/Application Support/NORVIK/SNT/FileAccessDaemon/TrayMenu.app; agent of snt-folder",
               "/Applications/NORVIK/SNT/Agent.app; agent of snt-bundle",
               "/Applications/NORVIK/SNT/TrayMenu.app; agent of snt-bundle",
               "/Library/Application Support/NORVIK/SNT/FileAccessDaemon.bundle; daemon of snt-bundle",
               "/Library/Application Support/NORVIK/SNT/ContainmentDaemon.bundle; daemon of snt-bundle",
               "/Library/Application Support/Norvik/AntiVirus/FileAccessDaemon; daemon of antivirus",
               "/Library/Application Support/NORVIK/SNT/FileAccessDaemon; daemon of snt-plain (file); data",
               "/Library/LaunchDaemons/com.norvik.containmentd.plist; launchd job",
               "/Library/LaunchDaemons/com.norvik.fileaccessd.plist; launchd job",
               "/Library/LaunchDaemons/com.norvik.fileaccessdaemon.plist; launchd job",
               "/Library/LaunchDaemons/com.norvik.FileAccessDaemon.plist; launchd job",
               "/Library/LaunchAgents/com.norvik.TrayMenu.plist; launchd job",
               "/Library/LaunchAgents/com.norvik.NorvikAgent.plist; launchd job",
               "/Library/LaunchAgents/com.norvik.Agent.plist; launchd job",
               "/Library/PrivilegedHelperTools/com.norvik.DiagnosticUtilityHelper; helper tool",
               "/Library/LaunchDaemons/com.norvik.DiagnosticUtilityHelper.plist; launchd job",
               "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper; helper tool",
               "/Library/LaunchDaemons/com.norvik.InstallerHelper.plist; launchd job",
               "/Library/PrivilegedHelperTools/com.norvik.SolutionUpdaterHelper; helper tool",
               "/Library/LaunchDaemons/com.norvik.SolutionUpdaterHelper.plist; launchd job",
               "/Library/PrivilegedHelperTools/com.norvik.UninstallerHelper; helper tool",
               "/Library/LaunchDaemons/com.norvik.UninstallerHelper.plist; launchd job",
               "/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper; helper tool",
               "/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper.package; data",
               "/Library/LaunchDaemons/com.norvik.SupportPrivilegedHelper.plist; launchd job",
               "/Library/Application Support/NORVIK/SNT; data",
               "/Users/Shared/Norvik; data",
               "/Library/Application Support/NORVIK; data",
               "/Library/Application Support/Norvik/AntiVir; data",
               "/Library/Application Support/Norvik/Antivirus; data",
               "/Applications/NORVIK/SNT; data",
               "/Library/Application Support/Norvik; data",
               "/Applications/Norvik; data",
               "/Applications/NORVIK; data"}));
}

TEST_F(KnownProduct, HasInstallationFolders) {
    Lines paths;
    for (const Base::URL& folder : Inventory::installationFolders()) {
        paths.push_back(folder.path());
    }
    EXPECT_EQ(
        paths,
        (Lines{"/Library/Application Support/NORVIK/SNT", "/Library/Application Support/Norvik/AntiVir",
               "/Library/Application Support/Norvik/Antivirus",
               "/Library/Application Support/NORVIK/SNT/FileAccessDaemon", "/Applications/NORVIK/SNT"}));
}

TEST_F(KnownProduct, HasJobs) {
    EXPECT_EQ(
        Inventory::knownLabels(),
        (NameSet{"com.norvik.Agent", "com.norvik.DiagnosticUtilityHelper", "com.norvik.FileAccessDaemon",
                 "com.norvik.InstallerHelper", "com.norvik.NorvikAgent", "com.norvik.SolutionUpdaterHelper",
                 "com.norvik.SupportPrivilegedHelper", "com.norvik.TrayMenu", "com.norvik.UninstallerHelper",
                 "com.norvik.containmentd", "com.norvik.fileaccessd", "com.norvik.fileaccessdaemon"}));
}

TEST_F(KnownProduct, HasProcesses) {
    EXPECT_EQ(Inventory::knownProcessNames(),
              (NameSet{"Agent", "FileAccessDaemon", "NORVIK Antivirus", "NORVIK Scanner", "NorvikAgent",
                       "Run Diagnostics", "Sentrel", "Sentrel Scanner", "Software Update", "TrayMenu",
                       "View Logs", "com.norvik.DiagnosticUtilityHelper", "com.norvik.InstallerHelper",
                       "com.norvik.SolutionUpdaterHelper", "com.norvik.SupportPrivilegedHelper",
                       "com.norvik.UninstallerHelper", "containmentd", "fileaccessd"}));
}

TEST_F(KnownProduct, HasOneExtension) {
    EXPECT_EQ(Inventory::knownExtensions(), NameSet{"com.norvik.kext.FileAccessFilter"});
}

TEST_F(KnownProduct, HasTheUninstallersHelpers) {
    EXPECT_EQ(Inventory::uninstallersHelpers(),
              (Lines{"com.norvik.InstallerHelper", "com.norvik.SupportPrivilegedHelper"}));
    EXPECT_EQ(Inventory::runtimeSupport().path(), "/usr/local/lib/swift");
}

TEST(Role, HasANameAndIsAProgramOrNot) {
    const std::vector<std::tuple<Role, std::string, bool>> expected{
        {Role::application, "application", true},
        {Role::agent, "agent", true},
        {Role::daemon, "daemon", true},
        {Role::kernelExtension, "kernel extension", true},
        {Role::finderService, "Finder service", false},
        {Role::launchdJob, "launchd job", false},
        {Role::data, "data", false},
        {Role::helperTool, "helper tool", false}};
    for (const auto& [role, name, program] : expected) {
        EXPECT_EQ(nameOf(role), name);
        EXPECT_EQ(isProgram(role), program) << name;
    }
}

}  // namespace
