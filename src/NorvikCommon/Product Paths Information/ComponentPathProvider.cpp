#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"

#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"

namespace NorvikCommon {

namespace {

Base::URL consoleApplications() {
    return *ComponentPathProvider::managementConsole().bundle->applications();
}

Base::URL consolePrivateItems() {
    return *ComponentPathProvider::managementConsole().bundle->privateItems();
}

}  // namespace

// Bundle identifiers intentionally mix "com.NORVIK" and "com.norvik".

Base::URL ComponentPathProvider::allNorvikProductsAppSupport() {
    return SystemPathProvider::localApplicationSupport().appendingPathComponent("NORVIK");
}

Base::URL ComponentPathProvider::productAppSupport() {
    return allNorvikProductsAppSupport().appendingPathComponent("SNT");
}

Base::URL ComponentPathProvider::workflow() {
    return Base::URL::fileURL("/Library/Services/Scan with Sentrel.workflow");
}

ApplicationInfo ComponentPathProvider::managementConsole() {
    return ApplicationInfo::appWithName(productName, "com.NORVIK.Sentrel",
                                        SystemPathProvider::localApplications());
}

ApplicationInfo ComponentPathProvider::diagnostics() {
    return ApplicationInfo::appWithName("Run Diagnostics", "com.NORVIK.DiagnosticUtil",
                                        consoleApplications());
}

ApplicationInfo ComponentPathProvider::viewLogs() {
    return ApplicationInfo::appWithName("View Logs", "com.NORVIK.View-Logs", consoleApplications());
}

ApplicationInfo ComponentPathProvider::scanner() {
    return ApplicationInfo::appWithName("NORVIK Scanner", "com.NORVIK.NORVIK-Scanner", consolePrivateItems());
}

ApplicationInfo ComponentPathProvider::uninstaller() {
    return ApplicationInfo::appWithName("Uninstall Sentrel", "com.NORVIK.Uninstall-NORVIK-Antivirus",
                                        consoleApplications());
}

BundleDaemonInfo ComponentPathProvider::fileAccessDaemon() {
    return BundleDaemonInfo::daemonWithName(
        "fileaccessd", consolePrivateItems().appendingPathComponent("FileAccessDaemon.bundle"),
        "com.norvik.FileAccessDaemon");
}

BundleDaemonInfo ComponentPathProvider::containmentDaemon() {
    return BundleDaemonInfo::daemonWithName(
        "containmentd", consolePrivateItems().appendingPathComponent("ContainmentDaemon.bundle"),
        "com.norvik.ContainmentDaemon");
}

BundleDaemonInfo ComponentPathProvider::userAgent() {
    return BundleDaemonInfo::guiAgentWithName("NorvikAgent", consolePrivateItems(), "com.norvik.NorvikAgent");
}

BundleDaemonInfo ComponentPathProvider::trayMenu() {
    return BundleDaemonInfo::guiAgentWithName("TrayMenu", consolePrivateItems(), "com.NORVIK.TrayMenu");
}

KextInfo ComponentPathProvider::fileAccessFilterKext() {
    return KextInfo::kextWithName("FileAccessFilter", "FileAccessFilter",
                                  *fileAccessDaemon().app->bundle->resources(),
                                  "com.norvik.kext.FileAccessFilter");
}

}  // namespace NorvikCommon
