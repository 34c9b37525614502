#include "Helpers/Retirement.h"

#include <memory>
#include <vector>

#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"
#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "Platform/SystemPorts.h"

namespace Helpers {

namespace {

/// A helper tool where launchd's blessing puts it.
NorvikCommon::DaemonInfo blessedTool(const std::string& label) {
    const Base::URL tools = Base::URL::fileURL("/Library/PrivilegedHelperTools");
    const Base::URL plist =
        NorvikCommon::SystemPathProvider::daemonsPlists().appendingPathComponent(label + ".plist");
    return NorvikCommon::DaemonInfo::daemonWithExecutable(
        NorvikCommon::FilesystemItemInfo::itemWithPath(tools.appendingPathComponent(label)),
        NorvikCommon::LaunchdInfo::launchdWithLabel(label, plist));
}

bool isGone(const NorvikCommon::DaemonInfo& tool) {
    Platform::FileManager& files = Platform::SystemPorts::current().files;
    return !files.itemExists(*tool.executable->location) && !files.itemExists(*tool.launchd->plistLocation());
}

void takeOutOfLaunchd(const std::string& label) {
    const std::string launchctl = NorvikCommon::SystemPathProvider::launchctlExecutable().path();
    const std::unique_ptr<Platform::Task> task = Platform::SystemPorts::current().tasks.launch(
        launchctl, std::vector<std::string>{"bootout", "system/" + label});
    if (task != nullptr) {
        task->waitUntilExit();
    }
}

}  // namespace

void retireRemovedTools(const std::string& ownLabel) {
    if (!isGone(blessedTool(ownLabel))) {
        return;
    }
    for (const NorvikCommon::DaemonInfo& tool : NorvikCommon::ComponentPathProvider::auxiliaryHelperTools()) {
        if (*tool.launchd->label != ownLabel && isGone(tool)) {
            takeOutOfLaunchd(*tool.launchd->label);
        }
    }
    takeOutOfLaunchd(ownLabel);
}

void retireSelf(const std::string& ownLabel) {
    const NorvikCommon::DaemonInfo self = blessedTool(ownLabel);
    Platform::FileManager& files = Platform::SystemPorts::current().files;
    static_cast<void>(files.removeItem(*self.executable->location));
    static_cast<void>(files.removeItem(*self.launchd->plistLocation()));
    takeOutOfLaunchd(ownLabel);
}

}  // namespace Helpers
