// The users of a Mac as the command line names them.

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>

#include "Base/WholeNumber.h"
#include "Support/Passwords.h"
#include "macsim/Commands.h"
#include "macsim/Refusal.h"

namespace Simulator {

namespace {

constexpr std::uint32_t kMinimumUser = 500;
constexpr std::uint32_t kMaximumUser = 60000;

Refusal misuse(const std::string& text) {
    return Refusal(text, Refusal::kMisuse);
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

void checkName(const std::string& name) {
    const bool isFine = !name.empty() && name.size() <= 32 && name != "root" && name != "Shared" &&
                        std::all_of(name.begin(), name.end(), [](unsigned char character) {
                            return std::islower(character) != 0 || std::isdigit(character) != 0;
                        });
    if (!isFine) {
        throw misuse("'" + name + "' is not a user name (lower-case letters and digits)");
    }
}

std::uint32_t parseUserId(const std::string& text) {
    const auto uid = Base::wholeNumber<std::uint32_t>(text);
    if (!uid || *uid < kMinimumUser || *uid > kMaximumUser) {
        throw misuse("'" + text + "' is not a user id from " + std::to_string(kMinimumUser) + " to " +
                     std::to_string(kMaximumUser));
    }
    return *uid;
}

User parseUser(const std::string& text) {
    const auto parts = split(text, ':');
    User user;
    bool isUnderstood = parts.size() >= 2 && !text.ends_with(':');
    for (std::size_t index = 2; index < parts.size(); ++index) {
        if (parts[index] == "admin" && !user.administrator) {
            user.administrator = true;
        } else if (parts[index] == "logged-out" && user.loggedIn) {
            user.loggedIn = false;
        } else {
            isUnderstood = false;
        }
    }
    if (!isUnderstood) {
        throw misuse("'" + text + "' is not NAME:UID, NAME:UID:admin or NAME:UID:logged-out");
    }
    user.name = parts[0];
    checkName(user.name);
    user.uid = parseUserId(parts[1]);
    return user;
}

void setPasswords(std::vector<User>& users, const std::vector<std::string>& passwords) {
    std::map<std::string, std::string> words;
    for (const std::string& password : passwords) {
        const std::size_t equals = password.find('=');
        const std::string name = password.substr(0, equals);
        if (equals == std::string::npos || equals + 1 == password.size()) {
            throw misuse("'" + password + "' is not USER=WORD");
        }
        if (std::none_of(users.begin(), users.end(), [&](const User& user) { return user.name == name; })) {
            throw misuse("there is no user named '" + name + "' who could have a password");
        }
        words[name] = password.substr(equals + 1);
    }
    for (User& user : users) {
        const auto word = words.find(user.name);
        user.passwordHash = hashPassword(word == words.end() ? user.name : word->second);
    }
}

}  // namespace

std::vector<User> parseUsers(const std::string& text, const std::vector<std::string>& passwords) {
    std::vector<User> users;
    std::set<std::string> names;
    std::set<std::uint32_t> uids;
    for (const std::string& part : split(text, ',')) {
        users.push_back(parseUser(part));
        const User& user = users.back();
        if (!names.insert(user.name).second) {
            throw misuse("there are two users named '" + user.name + "'");
        }
        if (!uids.insert(user.uid).second) {
            throw misuse("there are two users with the id " + std::to_string(user.uid));
        }
    }
    const bool hasAdministrator =
        std::any_of(users.begin(), users.end(), [](const User& user) { return user.administrator; });
    if (!hasAdministrator && !users.empty()) {
        users.front().administrator = true;
    }
    setPasswords(users, passwords);
    return users;
}

}  // namespace Simulator
