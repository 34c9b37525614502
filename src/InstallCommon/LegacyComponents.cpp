// Locations of earlier versions' components: the members of ComponentPathProvider whose names begin with
// "legacy", and the helper tools.

#include <array>
#include <map>
#include <string>

#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"
#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "Platform/ProcessOnce.h"

namespace NorvikCommon {

namespace {

Platform::ProcessOnce<std::vector<Base::URL>> installationPaths;
Platform::ProcessOnce<std::vector<Base::URL>> productsPaths;
Platform::ProcessOnce<std::vector<Base::URL>> workflowPaths;
Platform::ProcessOnce<std::vector<KextInfo>> kexts;
Platform::ProcessOnce<std::vector<DaemonInfo>> daemons;
Platform::ProcessOnce<std::vector<BundleDaemonInfo>> bundleDaemons;

Base::URL inLegacyDataFolder(std::string_view name) {
    return Base::URL::fileURL("/Library/Application Support/NORVIK/SNT").appendingPathComponent(name);
}

}  // namespace

const std::vector<Base::URL>& ComponentPathProvider::legacyInstallationPaths() {
    return installationPaths.get([] {
        return std::vector{Base::URL::fileURL("/Library/Application Support/Norvik/AntiVir"),
                           Base::URL::fileURL("/Library/Application Support/Norvik/Antivirus"),
                           Base::URL::fileURL("/Library/Application Support/NORVIK/SNT/FileAccessDaemon"),
                           Base::URL::fileURL("/Applications/NORVIK/SNT")};
    });
}

const std::vector<Base::URL>& ComponentPathProvider::legacyProductsPaths() {
    return productsPaths.get([] {
        // On a case-insensitive volume the last two are one folder; both stay.
        return std::vector{Base::URL::fileURL("/Library/Application Support/Norvik"),
                           Base::URL::fileURL("/Applications/Norvik"),
                           Base::URL::fileURL("/Applications/NORVIK")};
    });
}

const std::vector<Base::URL>& ComponentPathProvider::legacyWorkflowPaths() {
    return workflowPaths.get([] {
        return std::vector{Base::URL::fileURL("/Library/Services/Scan with NORVIK Antivirus.workflow")};
    });
}

const std::vector<KextInfo>& ComponentPathProvider::legacyVersionsFileAccessFilterKexts() {
    return kexts.get([] {
        return std::vector{KextInfo::kextWithName("FileAccessFilter", "com.norvik.kext.FileAccessFilter")};
    });
}

const std::vector<DaemonInfo>& ComponentPathProvider::legacyVersionsDaemons() {
    return daemons.get([] {
        // The first one's label is all lower case, unlike its executable's name.
        const auto executable = FilesystemItemInfo::itemWithPath(
            Base::URL::fileURL("/Library/Application Support/Norvik/AntiVirus/FileAccessDaemon"));
        const auto launchd = LaunchdInfo::launchdWithLabel(
            "com.norvik.fileaccessdaemon",
            Base::URL::fileURL("/Library/LaunchDaemons/com.norvik.fileaccessdaemon.plist"));
        return std::vector{
            DaemonInfo::daemonWithExecutable(executable, launchd),
            DaemonInfo::daemonWithName("FileAccessDaemon",
                                       Base::URL::fileURL("/Library/Application Support/NORVIK/SNT"))};
    });
}

const std::vector<BundleDaemonInfo>& ComponentPathProvider::legacyVersionsBundleDaemons() {
    return bundleDaemons.get([] {
        return std::vector{
            BundleDaemonInfo::daemonWithName("fileaccessd", inLegacyDataFolder("FileAccessDaemon.bundle"),
                                             "com.norvik.FileAccessDaemon"),
            BundleDaemonInfo::daemonWithName("containmentd", inLegacyDataFolder("ContainmentDaemon.bundle"),
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
    const Base::URL earliest = Base::URL::fileURL("/Applications/Norvik");
    std::vector<ApplicationInfo> apps;
    for (const Base::URL& folder : {earliest, Base::URL::fileURL("/Applications/NORVIK/SNT")}) {
        for (const App& app : kApps) {
            apps.push_back(ApplicationInfo::appWithName(app.name, app.bundleId, folder));
        }
    }
    apps.push_back(
        ApplicationInfo::appWithName("NORVIK Antivirus", earliest.appendingPathComponent("Sentrel.app"), ""));
    return apps;
}

std::vector<DaemonInfo> ComponentPathProvider::auxiliaryHelperTools() {
    static const std::map<std::string_view, std::string_view> kPlistNames{
        {"com.norvik.DiagnosticUtilityHelper", "com.norvik.DiagnosticUtilityHelper.plist"},
        {"com.norvik.SolutionUpdaterHelper", "com.norvik.SolutionUpdaterHelper.plist"},
        {"com.norvik.InstallerHelper", "com.norvik.InstallerHelper.plist"},
        {"com.norvik.UninstallerHelper", "com.norvik.UninstallerHelper.plist"}};
    const Base::URL toolsFolder = Base::URL::fileURL("/Library/PrivilegedHelperTools");
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

}  // namespace NorvikCommon
