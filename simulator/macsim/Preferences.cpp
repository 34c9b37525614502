#include "macsim/Preferences.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <sstream>

#include "Support/Machine.h"
#include "Support/Passwords.h"
#include "macsim/Commands.h"
#include "macsim/Refusal.h"

namespace Simulator {

namespace {

constexpr const char* kLanguages = "AppleLanguages";
constexpr std::size_t kLongestPart = 8;

std::string homeOf(const User& user) {
    return user.uid == 0 ? "/var/root" : "/Users/" + user.name;
}

std::string preferencesOf(const User& user) {
    return homeOf(user) + "/Library/Preferences/.GlobalPreferences.plist";
}

std::uint32_t groupOf(const User& user) {
    return user.uid == 0 ? 0 : kStaffGroup;
}

bool isLanguage(const std::string& text) {
    std::istringstream stream(text);
    bool isFirst = true;
    for (std::string part; std::getline(stream, part, '-'); isFirst = false) {
        const bool isFine =
            !part.empty() && part.size() <= kLongestPart &&
            std::all_of(part.begin(), part.end(), [isFirst](unsigned char character) {
                return std::isalpha(character) != 0 || (!isFirst && std::isdigit(character) != 0);
            });
        if (!isFine) {
            return false;
        }
    }
    return !text.empty() && !text.ends_with('-');
}

}  // namespace

std::vector<std::string> parseLanguages(const std::string& text) {
    std::vector<std::string> languages;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');) {
        if (!isLanguage(part)) {
            throw Refusal("'" + part + "' is not a language (like de or zh-Hans-CN)", Refusal::kMisuse);
        }
        languages.push_back(part);
    }
    if (languages.empty()) {
        throw Refusal("there is no language to set", Refusal::kMisuse);
    }
    return languages;
}

void buildPreferences(MacBuilder& mac, const std::vector<User>& users,
                      const std::vector<std::string>& languages) {
    const std::string bytes = writePropertyList({{kLanguages, languages}}, PropertyListForm::binary);
    std::vector<User> everybody = users;
    everybody.push_back({"root", 0});
    for (const User& user : everybody) {
        mac.folder(homeOf(user) + "/Library", {0700, user.uid, groupOf(user)});
        mac.folder(homeOf(user) + "/Library/Preferences", {0700, user.uid, groupOf(user)});
        mac.file(preferencesOf(user), bytes, {0600, user.uid, groupOf(user)});
    }
}

void setLanguages(const MacRoot& mac, const User& user, const std::vector<std::string>& languages) {
    const auto bytes = mac.read(preferencesOf(user));
    auto preferences = bytes ? parseHostilePropertyList(*bytes) : std::nullopt;
    if (!preferences) {
        preferences = PropertyList::object();
    }
    (*preferences)[kLanguages] = languages;
    if (!mac.write(preferencesOf(user), writePropertyList(*preferences, PropertyListForm::binary), 0600,
                   user.uid, groupOf(user))) {
        throw Refusal("cannot set the languages of " + user.name + ": " + std::strerror(errno));
    }
}

void buildParentalControl(MacBuilder& mac, const std::string& state) {
    mac.propertyList(std::string(kParentalControlFile),
                     {{"State", state}, {"PasswordHash", hashPassword(kParentalControlPassword)}},
                     PropertyListForm::xml);
}

}  // namespace Simulator
