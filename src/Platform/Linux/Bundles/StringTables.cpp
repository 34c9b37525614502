#include "Platform/Linux/Bundles/StringTables.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <utility>

#include "Platform/Linux/Bundles/Localizations.h"

namespace Platform::Linux {

namespace {

bool isFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

StringTables::StringTables(const Base::URL& bundle, std::string developmentRegion,
                           std::string preferencesFile)
    : resources_(bundle.appendingPathComponent("Contents/Resources").path() + "/"),
      developmentRegion_(std::move(developmentRegion)),
      preferencesFile_(std::move(preferencesFile)) {}

std::string StringTables::localization() const {
    std::vector<std::string> languages = preferredLanguages(preferencesFile_);
    languages.push_back(developmentRegion_);
    for (const std::string& language : languages) {
        for (const std::string& name : localizationNames(language)) {
            if (isFolder(resources_ + name + ".lproj")) {
                return name;
            }
        }
    }
    return "en";
}

std::optional<std::string> StringTables::text(const std::string& key, const std::string& table) {
    const std::lock_guard lock(mutex_);
    if (!localization_) {
        localization_ = localization();
    }
    auto found = tables_.find(table);
    if (found == tables_.end()) {
        const std::string file = resources_ + *localization_ + ".lproj/" + table + ".strings";
        auto strings = readPropertyListStrings(AT_FDCWD, file);
        found = tables_.emplace(table, std::move(strings).value_or(PropertyListStrings())).first;
    }
    const auto entry = found->second.find(key);
    return entry != found->second.end() ? std::optional(entry->second) : std::nullopt;
}

}  // namespace Platform::Linux
