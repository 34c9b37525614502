#include "InstallCommon/RepairItemsUtil.h"

#include "InstallCommon/FileSystemUtil.h"
#include "NorvikCommon/InstallerLog.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"
#include "Platform/ProcessOnce.h"

namespace InstallCommon {

namespace {

struct Prepared {};

Platform::ProcessOnce<Prepared> setupRepairFolder;

Prepared prepareRepairFolder() {
    const Base::URL folder = NorvikCommon::FeaturePathProvider::repairFolder();
    FileSystemUtil::createDirectory(folder, true);
    FileSystemUtil::setPermissions(0, folder);
    FileSystemUtil::setOwner(0, 0, folder);
    return {};
}

}  // namespace

void RepairItemsUtil::backup(const Base::URL& item) {
    static_cast<void>(setupRepairFolder.get(prepareRepairFolder));
    const Base::URL destination =
        NorvikCommon::FeaturePathProvider::repairFolder().appendingPathComponent(item.path());
    NorvikCommon::logInstallerLine("Backup source: " + item.path() + ", destination: " + destination.path());
    FileSystemUtil::copy(item, destination);
}

}  // namespace InstallCommon
