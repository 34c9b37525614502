#pragma once

#include <string>
#include <vector>

namespace Platform::Linux {

/// The preferences file of this process's user: Library/Preferences/.GlobalPreferences.plist in the home
/// folder of the password database. Empty for a user without an entry.
[[nodiscard]] std::string globalPreferencesFile();

/// The user's languages (AppleLanguages) in their order; "en" if the preferences name none.
[[nodiscard]] std::vector<std::string> preferredLanguages(const std::string& preferencesFile);

/// The names under which a bundle may have a localization that suits a reader of `language`, best first: the
/// language itself, without its region, without a script that it implies anyway. The two ways of writing
/// Chinese never stand in for each other; a region tells which is meant. Empty for a malformed `language`.
[[nodiscard]] std::vector<std::string> localizationNames(const std::string& language);

}  // namespace Platform::Linux
