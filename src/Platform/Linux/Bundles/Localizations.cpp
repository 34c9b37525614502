#include "Platform/Linux/Bundles/Localizations.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "Platform/Linux/Bundles/PropertyListFile.h"

namespace Platform::Linux {

namespace {

constexpr std::array<std::string_view, 3> kTraditionalChineseRegions{"TW", "HK", "MO"};
constexpr std::size_t kScriptLength = 4;

bool isAlphanumeric(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char character) {
        return character < 0x80 && std::isalnum(character) != 0;
    });
}

/// The parts of "zh-Hans-CN" (or "zh_Hans_CN"). Empty if any is malformed: the name becomes a folder's.
std::vector<std::string> partsOf(std::string_view language) {
    std::vector<std::string> parts;
    for (;;) {
        const std::size_t end = language.find_first_of("-_");
        parts.emplace_back(language.substr(0, end));
        if (!isAlphanumeric(parts.back())) {
            return {};
        }
        if (end == std::string_view::npos) {
            return parts;
        }
        language.remove_prefix(end + 1);
    }
}

/// "Hans" or "Hant", from the script or else from the region.
std::string chineseScript(const std::vector<std::string>& parts) {
    if (parts.size() > 1 && parts[1].size() == kScriptLength) {
        return parts[1];
    }
    const bool traditional =
        parts.size() > 1 && std::find(kTraditionalChineseRegions.begin(), kTraditionalChineseRegions.end(),
                                      parts[1]) != kTraditionalChineseRegions.end();
    return traditional ? "Hant" : "Hans";
}

void addOnce(std::vector<std::string>& names, std::string name) {
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        names.push_back(std::move(name));
    }
}

}  // namespace

std::string globalPreferencesFile() {
    std::array<char, 16384> buffer;
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr ||
        found->pw_dir == nullptr) {
        return {};
    }
    return std::string(found->pw_dir) + "/Library/Preferences/.GlobalPreferences.plist";
}

std::vector<std::string> preferredLanguages(const std::string& preferencesFile) {
    auto languages = readPropertyListArray(preferencesFile, "AppleLanguages");
    return languages.empty() ? std::vector<std::string>{"en"} : languages;
}

std::vector<std::string> localizationNames(const std::string& language) {
    const std::vector<std::string> parts = partsOf(language);
    if (parts.empty()) {
        return {};
    }
    std::vector<std::string> names{language};
    if (parts.front() == "zh") {
        const std::string script = chineseScript(parts);
        addOnce(names, "zh-" + script);
        if (script == "Hans") {
            addOnce(names, "zh");
        }
        return names;
    }
    const bool hasScript = parts.size() > 1 && parts[1].size() == kScriptLength;
    addOnce(names, hasScript ? parts[0] + "-" + parts[1] : parts[0]);
    return names;
}

}  // namespace Platform::Linux
