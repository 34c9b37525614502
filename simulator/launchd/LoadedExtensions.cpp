#include "launchd/LoadedExtensions.h"

#include <filesystem>

#include "Support/Files.h"
#include "Support/PropertyList.h"

namespace Simulator {

void LoadedExtensions::loadFrom(const std::string& folder) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() != ".kext") {
            continue;
        }
        const auto bytes = readFile(entry->path().string() + "/Contents/Info.plist");
        const auto info = bytes ? parseHostilePropertyList(*bytes) : std::nullopt;
        if (const std::string identifier = info ? stringOf(*info, "CFBundleIdentifier") : "";
            !identifier.empty()) {
            identifiers_.insert(identifier);
        }
    }
}

std::int32_t LoadedExtensions::unload(const Caller& caller, const std::string& identifier) {
    if (caller.uid != 0) {
        return kKextNotPrivileged;
    }
    if (!identifiers_.contains(identifier)) {
        return kKextNotFound;
    }
    if (faults_.contains("kext-busy")) {
        return kKextInUse;
    }
    identifiers_.erase(identifier);
    return 0;
}

}  // namespace Simulator
