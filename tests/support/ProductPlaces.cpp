#include "support/ProductPlaces.h"

#include <set>

namespace TestSupport::ProductPlaces {

using Texts = std::vector<std::string>;

const Texts& daemons() {
    static const Texts kLabels{"com.norvik.containmentd",     "com.norvik.fileaccessd",
                               "com.norvik.fileaccessdaemon", "com.norvik.FileAccessDaemon",
                               "com.norvik.fileaccessd",      "com.norvik.containmentd"};
    return kLabels;
}

const Texts& agents() {
    static const Texts kLabels{"com.norvik.TrayMenu", "com.norvik.NorvikAgent", "com.norvik.Agent",
                               "com.norvik.TrayMenu", "com.norvik.Agent",       "com.norvik.TrayMenu",
                               "com.norvik.Agent",    "com.norvik.TrayMenu",    "com.norvik.Agent",
                               "com.norvik.TrayMenu"};
    return kLabels;
}

std::string daemonPropertyList(const std::string& label) {
    return "/Library/LaunchDaemons/" + label + ".plist";
}

std::string agentPropertyList(const std::string& label) {
    return "/Library/LaunchAgents/" + label + ".plist";
}

const Texts& processes() {
    static const Texts kNames{"Sentrel",        "Run Diagnostics", "Software Update", "View Logs",
                              "NORVIK Scanner", "Sentrel Scanner", "Run Diagnostics", "Software Update",
                              "View Logs",      "NORVIK Scanner",  "Sentrel Scanner", "NORVIK Antivirus"};
    return kNames;
}

const Texts& items() {
    static const Texts kPaths{"/Applications/Sentrel.app",
                              "/Applications/Norvik/Run Diagnostics.app",
                              "/Applications/Norvik/Software Update.app",
                              "/Applications/Norvik/View Logs.app",
                              "/Applications/Norvik/NORVIK Scanner.app",
                              "/Applications/Norvik/Sentrel Scanner.app",
                              "/Applications/NORVIK/SNT/Run Diagnostics.app",
                              "/Applications/NORVIK/SNT/Software Update.app",
                              "/Applications/NORVIK/SNT/View Logs.app",
                              "/Applications/NORVIK/SNT/NORVIK Scanner.app",
                              "/Applications/NORVIK/SNT/Sentrel Scanner.app",
                              "/Applications/Norvik/Sentrel.app",
                              "/Library/Services/Scan with Sentrel.workflow",
                              "/Library/Services/Scan with NORVIK Antivirus.workflow",
                              "/Library/Extensions/FileAccessFilter.kext",
                              "/Library/Application Support/Norvik/AntiVir/Agent.app",
                              "/Library/Application Support/Norvik/AntiVir/TrayMenu.app",
                              "/Library/Application Support/Norvik/Antivirus/Agent.app",
                              "/Library/Application Support/Norvik/Antivirus/TrayMenu.app",
                              "/Library/Application Support/NORVIK/SNT/FileAccessDaemon/Agent.app",
                              "/Library/Application Support/NORVIK/SNT/FileAccessDaemon/TrayMenu.app",
                              "/Applications/NORVIK/SNT/Agent.app",
                              "/Applications/NORVIK/SNT/TrayMenu.app",
                              "/Library/Application Support/NORVIK/SNT/FileAccessDaemon.bundle",
                              "/Library/Application Support/NORVIK/SNT/ContainmentDaemon.bundle",
                              "/Library/Application Support/Norvik/AntiVirus/FileAccessDaemon",
                              "/Library/Application Support/NORVIK/SNT/FileAccessDaemon",
                              "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
                              "/Library/LaunchAgents/com.norvik.NorvikAgent.plist",
                              "/Library/LaunchAgents/com.norvik.Agent.plist",
                              "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
                              "/Library/LaunchAgents/com.norvik.Agent.plist",
                              "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
                              "/Library/LaunchAgents/com.norvik.Agent.plist",
                              "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
                              "/Library/LaunchAgents/com.norvik.Agent.plist",
                              "/Library/LaunchAgents/com.norvik.TrayMenu.plist",
                              "/Library/LaunchDaemons/com.norvik.containmentd.plist",
                              "/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
                              "/Library/LaunchDaemons/com.norvik.fileaccessdaemon.plist",
                              "/Library/LaunchDaemons/com.norvik.FileAccessDaemon.plist",
                              "/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
                              "/Library/LaunchDaemons/com.norvik.containmentd.plist"};
    return kPaths;
}

const Texts& folders() {
    static const Texts kPaths{"/Library/Application Support/NORVIK/SNT",
                              "/Users/Shared/Norvik",
                              "/Library/Application Support/NORVIK",
                              "/Library/Application Support/Norvik/AntiVir",
                              "/Library/Application Support/Norvik/Antivirus",
                              "/Library/Application Support/NORVIK/SNT/FileAccessDaemon",
                              "/Applications/NORVIK/SNT",
                              "/Library/Application Support/Norvik",
                              "/Applications/Norvik",
                              "/Applications/NORVIK"};
    return kPaths;
}

const Texts& helperTools() {
    static const Texts kPaths{"/Library/PrivilegedHelperTools/com.norvik.DiagnosticUtilityHelper",
                              "/Library/PrivilegedHelperTools/com.norvik.SolutionUpdaterHelper",
                              "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper",
                              "/Library/PrivilegedHelperTools/com.norvik.UninstallerHelper"};
    return kPaths;
}

const Texts& helperPropertyLists() {
    static const Texts kPaths{"/Library/LaunchDaemons/com.norvik.DiagnosticUtilityHelper.plist",
                              "/Library/LaunchDaemons/com.norvik.SolutionUpdaterHelper.plist",
                              "/Library/LaunchDaemons/com.norvik.InstallerHelper.plist",
                              "/Library/LaunchDaemons/com.norvik.UninstallerHelper.plist"};
    return kPaths;
}

const Texts& everything() {
    static const Texts kPaths = [] {
        std::set<std::string> paths;
        for (const Texts* list : {&items(), &folders(), &helperTools(), &helperPropertyLists()}) {
            paths.insert(list->begin(), list->end());
        }
        return Texts(paths.begin(), paths.end());
    }();
    return kPaths;
}

std::string repairCopy(const std::string& path) {
    return "/Library/Application Support/NORVIK/SNT/Repair" + path;
}

}  // namespace TestSupport::ProductPlaces
