#include "InstallCommon/CurrentInstallationEnvironment.h"

#include <algorithm>
#include <memory>
#include <string>

#include "InstallCommon/ComponentPathProvider+Legacy.h"
#include "InstallCommon/ProductVersionUtil.h"
#include "NorvikCommon/InstallerLog.h"
#include "NorvikCommon/PMProcessMonitor.h"
#include "Platform/ProcessOnce.h"
#include "Platform/SystemPorts.h"

namespace InstallCommon {

namespace {

Platform::ProcessOnce<std::unique_ptr<InstallationEnvironment>> sharedEnvironment;

bool itemExists(const Base::URL& item) {
    return Platform::SystemPorts::current().files->itemExists(item);
}

Base::URL consoleLocation() {
    return *ComponentPathProvider::managementConsole().bundle->location;
}

template <class List>
bool contains(const List& list, std::string_view text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

}  // namespace

std::optional<InstallatedNorvikAntivirusType> installatedNorvikAntivirusType(std::int64_t rawValue) {
    if (rawValue < 0 || rawValue > 4) {
        return std::nullopt;
    }
    return static_cast<InstallatedNorvikAntivirusType>(rawValue);
}

const InstallationEnvironment& CurrentInstallationEnvironment::shared() {
    return *sharedEnvironment.get([]() -> std::unique_ptr<InstallationEnvironment> {
        return std::make_unique<CurrentInstallationEnvironment>();
    });
}

CurrentInstallationEnvironment::CurrentInstallationEnvironment()
    : otherAntivirusInstalled_(hasOtherAntivirusDirectory() || isOtherAntivirusRunning()) {
    const Installed found = checkNorvikAntivirusInstalled();
    norvikAntivirusPresent_ = found.installed;
    norvikAntivirusSeemsToBeUpdateable_ = found.updatable;
}

bool CurrentInstallationEnvironment::hasOtherAntivirusDirectory() {
    return std::any_of(otherAntivirusesAppPaths.begin(), otherAntivirusesAppPaths.end(),
                       [](std::string_view path) { return itemExists(Base::URL::fileURL(path)); });
}

bool CurrentInstallationEnvironment::isOtherAntivirusRunning() {
    const std::vector<NorvikCommon::PMProcess> processes =
        NorvikCommon::PMProcessMonitor::defaultMonitor().allProcesses();
    // The location is an executable's path; intentionally it is compared with the bundles' paths unchanged.
    return std::any_of(processes.begin(), processes.end(), [](const NorvikCommon::PMProcess& process) {
        return contains(otherAntivirusesProcessNames, process.name) ||
               contains(otherAntivirusesAppPaths, process.location.path());
    });
}

CurrentInstallationEnvironment::Installed CurrentInstallationEnvironment::checkNorvikAntivirusInstalled() {
    std::vector<Base::URL> folders{ComponentPathProvider::productAppSupport()};
    const std::vector<Base::URL>& earlier = ComponentPathProvider::legacyInstallationPaths();
    folders.insert(folders.end(), earlier.begin(), earlier.end());
    if (std::none_of(folders.begin(), folders.end(), itemExists)) {
        return {};
    }
    const bool updatable = itemExists(consoleLocation());
    // The line is written only if something was found, so its first value is always the same.
    NorvikCommon::logInstallerLine(std::string("found installed version true, updatable: ") +
                                   (updatable ? "true" : "false"));
    return {true, updatable};
}

InstallatedNorvikAntivirusType CurrentInstallationEnvironment::checkNorvikAntivirusInstallType(
    const Platform::Bundle& relativeToNew) const {
    using Type = InstallatedNorvikAntivirusType;
    const std::unique_ptr<Platform::Bundle> installed =
        Platform::SystemPorts::current().bundles->open(consoleLocation());
    if (installed == nullptr) {
        return norvikAntivirusPresent_ ? Type::installedNotUpdateable : Type::notInstalled;
    }
    const std::optional<std::strong_ordering> order =
        ProductVersionUtil::compareVersions(*installed, relativeToNew);
    if (!order) {
        return Type::installedNotUpdateable;
    }
    if (*order == std::strong_ordering::less) {
        return norvikAntivirusSeemsToBeUpdateable_ ? Type::installedUpdateable : Type::installedNotUpdateable;
    }
    return *order == std::strong_ordering::equal ? Type::installedSameVersion : Type::installedNewerVersion;
}

}  // namespace InstallCommon
