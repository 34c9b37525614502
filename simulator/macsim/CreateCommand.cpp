#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <set>
#include <sstream>

#include "macsim/Commands.h"
#include "macsim/HostPrograms.h"
#include "macsim/ProductLayout.h"
#include "macsim/Refusal.h"
#include "macsim/SystemLayout.h"
#include "macsim/Workshop.h"

namespace Simulator {

namespace fs = std::filesystem;

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

CreateOptions completed(CreateOptions options) {
    const auto known = generations();
    for (const std::string& name : options.installed) {
        if (name != "all" && std::find(known.begin(), known.end(), name) == known.end()) {
            throw misuse("there is no generation named '" + name + "'");
        }
    }
    if (std::find(options.installed.begin(), options.installed.end(), "all") != options.installed.end()) {
        options.installed.assign(known.begin(), known.end());
    }
    if (options.uninstaller.empty()) {
        options.uninstaller = ownBundle("Uninstall Sentrel.app");
    }
    return options;
}

std::string otherProcess(MacBuilder& mac, const std::string& name) {
    const std::string path = "/Library/Application Support/Other Antivirus/" + name;
    mac.program("simulated-app", path);
    return path;
}

void otherApplication(MacBuilder& mac, const std::string& path) {
    const std::string name = fs::path(path).stem().string();
    mac.propertyList(
        path + "/Contents/Info.plist",
        {{"CFBundleExecutable", name}, {"CFBundleShortVersionString", "1.0"}, {"CFBundleVersion", "1"}},
        PropertyListForm::xml);
    mac.program("simulated-app", path + "/Contents/MacOS/" + name);
}

void buildOtherAntivirus(MacBuilder& mac, const CreateOptions& options, Machine& machine) {
    const std::uint32_t user = options.users.empty() ? 0 : options.users.front().uid;
    for (const std::string& kind : options.otherAntivirus) {
        if (kind == "app") {
            otherApplication(mac, "/Applications/ESET Cyber Security.app");
        } else if (kind.starts_with('/')) {
            otherApplication(mac, fs::path(kind).lexically_normal().string());
        } else {
            machine.running.push_back({otherProcess(mac, kind == "process" ? "esets_gui" : kind), user});
        }
    }
}

Machine describe(MacBuilder& mac, const CreateOptions& options) {
    Machine machine;
    machine.users = options.users;
    machine.extensionFolders = extensionFolders();
    const std::uint32_t user = options.users.empty() ? 0 : options.users.front().uid;
    for (const std::string& name : options.running) {
        const auto programs = installedApplications(mac, name);
        if (programs.empty()) {
            throw misuse("no application named '" + name + "' is installed that could run");
        }
        for (const std::string& program : programs) {
            machine.running.push_back({program, user});
        }
    }
    buildOtherAntivirus(mac, options, machine);
    return machine;
}

void checkOtherAntivirus(const std::vector<std::string>& kinds) {
    for (const std::string& kind : kinds) {
        const bool isApp = kind.starts_with('/') && kind.ends_with(".app");
        if (kind.empty() || (!isApp && kind.find('/') != std::string::npos)) {
            throw misuse("'" + kind +
                         "' is neither app, process, a process name nor the path of an application");
        }
    }
}

User parseUser(const std::string& text) {
    const auto parts = split(text, ':');
    User user;
    const bool hasFlag = parts.size() == 3 && parts[2] == "logged-out";
    if ((parts.size() != 2 && !hasFlag) || text.ends_with(':')) {
        throw misuse("'" + text + "' is not NAME:UID or NAME:UID:logged-out");
    }
    user.name = parts[0];
    user.loggedIn = !hasFlag;
    const bool nameIsFine = !user.name.empty() && user.name.size() <= 32 && user.name != "root" &&
                            user.name != "Shared" &&
                            std::all_of(user.name.begin(), user.name.end(), [](unsigned char character) {
                                return std::islower(character) != 0 || std::isdigit(character) != 0;
                            });
    if (!nameIsFine) {
        throw misuse("'" + user.name + "' is no user name (lower-case letters and digits)");
    }
    const auto [end, error] = std::from_chars(parts[1].data(), parts[1].data() + parts[1].size(), user.uid);
    if (error != std::errc() || end != parts[1].data() + parts[1].size() || user.uid < kMinimumUser ||
        user.uid > kMaximumUser) {
        throw misuse("'" + parts[1] + "' is no user id from " + std::to_string(kMinimumUser) + " to " +
                     std::to_string(kMaximumUser));
    }
    return user;
}

}  // namespace

std::vector<User> parseUsers(const std::string& text) {
    std::vector<User> users;
    std::set<std::string> names;
    std::set<std::uint32_t> uids;
    for (const std::string& part : split(text, ',')) {
        users.push_back(parseUser(part));
        if (!names.insert(users.back().name).second || !uids.insert(users.back().uid).second) {
            throw misuse("user '" + part + "' is there twice");
        }
    }
    return users;
}

int createMac(const CreateOptions& given) {
    const CreateOptions options = completed(given);
    checkOtherAntivirus(options.otherAntivirus);
    Workshop workshop(options.folder);
    MacBuilder mac(workshop.root(), simulatorPrograms());
    buildSystem(mac, options.users);
    buildProduct(mac, options);
    mac.file(std::string(kMachineFile), encode(describe(mac, options)));
    workshop.finish();
    return 0;
}

}  // namespace Simulator
