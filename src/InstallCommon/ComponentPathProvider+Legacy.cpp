#include "InstallCommon/ComponentPathProvider+Legacy.h"

#include <array>
#include <map>
#include <string_view>

#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "Platform/ProcessOnce.h"

namespace InstallCommon {

using NorvikCommon::ApplicationInfo;
using NorvikCommon::BundleDaemonInfo;
using NorvikCommon::DaemonInfo;
using NorvikCommon::FilesystemItemInfo;
using NorvikCommon::KextInfo;
using NorvikCommon::LaunchdInfo;
using NorvikCommon::SystemPathProvider;

namespace {

Platform::ProcessOnce<std::vector<Base::URL>> installationPaths;
Platform::ProcessOnce<std::vector<Base::URL>> productsPaths;
Platform::ProcessOnce<std::vector<Base::URL>> workflowPaths;
Platform::ProcessOnce<std::vector<KextInfo>> legacyKextRecords;
Platform::ProcessOnce<std::vector<DaemonInfo>> legacyDaemonRecords;
Platform::ProcessOnce<std::vector<BundleDaemonInfo>> legacyBundleDaemonRecords;

Base::URL legacyDataFolder() {
    return Base::URL::fileURL("/Library/Application Support/NORVIK/SNT");
}

}  // namespace

Base::URL ComponentPathProvider::legacyAntiVirFolder() {
    return Base::URL::fileURL("/Library/Application Support/Norvik/AntiVir");
}

Base::URL ComponentPathProvider::legacyAntivirusFolder() {
    return Base::URL::fileURL("/Library/Application Support/Norvik/Antivirus");
}

Base::URL ComponentPathProvider::legacyFileAccessDaemonFolder() {
    return legacyDataFolder().appendingPathComponent("FileAccessDaemon");
}

Base::URL ComponentPathProvider::legacySntApplications() {
    return Base::URL::fileURL("/Applications/NORVIK/SNT");
}

Base::URL ComponentPathProvider::legacyNorvikApplications() {
    return Base::URL::fileURL("/Applications/Norvik");
}

DaemonInfo ComponentPathProvider::legacyAntivirusDaemon() {
    // The label is all lower case, unlike the executable's name, and the folder is not legacyAntivirusFolder.
    return DaemonInfo::daemonWithExecutable(
        FilesystemItemInfo::itemWithPath(
            Base::URL::fileURL("/Library/Application Support/Norvik/AntiVirus/FileAccessDaemon")),
        LaunchdInfo::launchdWithLabel(
            "com.norvik.fileaccessdaemon",
            Base::URL::fileURL("/Library/LaunchDaemons/com.norvik.fileaccessdaemon.plist")));
}

DaemonInfo ComponentPathProvider::legacySntDaemon() {
    return DaemonInfo::daemonWithName("FileAccessDaemon", legacyDataFolder());
}

const std::vector<Base::URL>& ComponentPathProvider::legacyInstallationPaths() {
    return installationPaths.get([] {
        return std::vector{legacyAntiVirFolder(), legacyAntivirusFolder(), legacyFileAccessDaemonFolder(),
                           legacySntApplications()};
    });
}

const std::vector<Base::URL>& ComponentPathProvider::legacyProductsPaths() {
    return productsPaths.get([] {
        // On a case-insensitive volume the last two are one folder; both stay.
        return std::vector{Base::URL::fileURL("/Library/Application Support/Norvik"),
                           legacyNorvikApplications(), Base::URL::fileURL("/Applications/NORVIK")};
    });
}

const std::vector<Base::URL>& ComponentPathProvider::legacyWorkflowPaths() {
    return workflowPaths.get([] {
        return std::vector{Base::URL::fileURL("/Library/Services/Scan with NORVIK Antivirus.workflow")};
    });
}

const std::vector<KextInfo>& ComponentPathProvider::legacyVersionsFileAccessFilterKexts() {
    return legacyKextRecords.get([] {
        return std::vector{KextInfo::kextWithName("FileAccessFilter", "com.norvik.kext.FileAccessFilter")};
    });
}

const std::vector<DaemonInfo>& ComponentPathProvider::legacyVersionsDaemons() {
    return legacyDaemonRecords.get([] { return std::vector{legacyAntivirusDaemon(), legacySntDaemon()}; });
}

const std::vector<BundleDaemonInfo>& ComponentPathProvider::legacyVersionsBundleDaemons() {
    return legacyBundleDaemonRecords.get([] {
        const Base::URL folder = legacyDataFolder();
        return std::vector{BundleDaemonInfo::daemonWithName(
                               "fileaccessd", folder.appendingPathComponent("FileAccessDaemon.bundle"),
                               "com.norvik.FileAccessDaemon"),
                           BundleDaemonInfo::daemonWithName(
                               "containmentd", folder.appendingPathComponent("ContainmentDaemon.bundle"),
                               "com.norvik.ContainmentDaemon")};
    });
}

std::vector<BundleDaemonInfo> ComponentPathProvider::legacyVersionsUserAgents() {
    std::vector<BundleDaemonInfo> agents;
    for (const Base::URL& folder : legacyInstallationPaths()) {
        agents.push_back(BundleDaemonInfo::guiAgentWithName("Agent", folder, "com.NORVIK.Agent"));
        agents.push_back(BundleDaemonInfo::guiAgentWithName("TrayMenu", folder, "com.NORVIK.TrayMenu"));
    }
    return agents;
}

std::vector<ApplicationInfo> ComponentPathProvider::legacyVersionsGuiApps() {
    struct App {
        std::string_view name;
        std::string_view bundleId;
    };
    static constexpr std::array<App, 5> kApps{{{"Run Diagnostics", ""},
                                               {"Software Update", ""},
                                               {"View Logs", ""},
                                               {"NORVIK Scanner", ""},
                                               {"Sentrel Scanner", "com.NORVIK.Sentrel-Scanner"}}};
    std::vector<ApplicationInfo> apps;
    for (const Base::URL& folder : {legacyNorvikApplications(), legacySntApplications()}) {
        for (const App& app : kApps) {
            apps.push_back(ApplicationInfo::appWithName(app.name, app.bundleId, folder));
        }
    }
    apps.push_back(ApplicationInfo::appWithName(
        "NORVIK Antivirus", legacyNorvikApplications().appendingPathComponent("Sentrel.app"), ""));
    return apps;
}

std::vector<DaemonInfo> ComponentPathProvider::auxiliaryHelperTools() {
    static const std::map<std::string_view, std::string_view> kPlistNames{
        {"com.norvik.DiagnosticUtilityHelper", "com.norvik.DiagnosticUtilityHelper.plist"},
        {"com.norvik.SolutionUpdaterHelper", "com.norvik.SolutionUpdaterHelper.plist"},
        {"com.norvik.InstallerHelper", "com.norvik.InstallerHelper.plist"},
        {"com.norvik.UninstallerHelper", "com.norvik.UninstallerHelper.plist"}};
    const Base::URL toolsFolder = SystemPathProvider::privilegedHelperTools();
    std::vector<DaemonInfo> tools;
    tools.reserve(kPlistNames.size());
    for (const auto& [label, plistName] : kPlistNames) {
        tools.push_back(DaemonInfo::daemonWithExecutable(
            FilesystemItemInfo::itemWithPath(toolsFolder.appendingPathComponent(label)),
            LaunchdInfo::launchdWithLabel(
                label, SystemPathProvider::daemonsPlists().appendingPathComponent(plistName))));
    }
    return tools;
}

}  // namespace InstallCommon
