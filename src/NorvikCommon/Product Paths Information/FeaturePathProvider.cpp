#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"

#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"

namespace NorvikCommon {

namespace {

Base::URL inDataFolder(std::string_view name) {
    return ComponentPathProvider::productAppSupport().appendingPathComponent(name);
}

}  // namespace

Base::URL FeaturePathProvider::quarantineFolder() {
    return inDataFolder("Quarantine");
}
Base::URL FeaturePathProvider::quarantineDatabase() {
    return inDataFolder("quarantine.db");
}
FilesystemItemInfo FeaturePathProvider::settingsPlist() {
    return FilesystemItemInfo::itemWithPath(inDataFolder("settings.plist"));
}
FilesystemItemInfo FeaturePathProvider::avBases() {
    return FilesystemItemInfo::itemWithPath(inDataFolder("bases.nvb"));
}
Base::URL FeaturePathProvider::repairFolder() {
    return inDataFolder("Repair");
}
Base::URL FeaturePathProvider::flsStorage() {
    return inDataFolder("filerating.db");
}
Base::URL FeaturePathProvider::verdictStorage() {
    return inDataFolder("filerating.db");
}
Base::URL FeaturePathProvider::fileRatingStorage() {
    return inDataFolder("filerating.db");
}
Base::URL FeaturePathProvider::logDirectory() {
    return inDataFolder("Logs");
}
Base::URL FeaturePathProvider::preferencesFolder() {
    return Base::URL::fileURL("/Users/Shared/Norvik");
}
Base::URL FeaturePathProvider::containmentServiceFolder() {
    return inDataFolder("ContainmentRoot");
}

}  // namespace NorvikCommon
