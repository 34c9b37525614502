#include <algorithm>
#include <filesystem>

#include "macsim/Commands.h"
#include "macsim/HostPrograms.h"
#include "macsim/Preferences.h"
#include "macsim/ProductLayout.h"
#include "macsim/Refusal.h"
#include "macsim/SystemLayout.h"
#include "macsim/Workshop.h"

namespace Simulator {

namespace fs = std::filesystem;

namespace {

Refusal misuse(const std::string& text) {
    return Refusal(text, Refusal::kMisuse);
}

void checkUninstaller(const CreateOptions& options) {
    if (options.withoutUninstaller) {
        throw misuse("--uninstaller excludes --without-uninstaller");
    }
    std::error_code ignored;
    for (const char* part : {"Contents/Info.plist", "Contents/MacOS/Uninstall Sentrel"}) {
        if (!fs::is_regular_file(fs::path(options.uninstaller) / part, ignored)) {
            throw Refusal(options.uninstaller + " is not an uninstaller's bundle: " + part + " is missing");
        }
    }
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
    } else {
        checkUninstaller(options);
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
    machine.distantObjects = distantObjects();
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

}  // namespace

int createMac(const CreateOptions& given) {
    const CreateOptions options = completed(given);
    checkOtherAntivirus(options.otherAntivirus);
    Workshop workshop(options.folder);
    MacBuilder mac(workshop.root(), simulatorPrograms());
    buildSystem(mac, options.users);
    buildPreferences(mac, options.users, options.languages);
    buildProduct(mac, options);
    buildParentalControl(mac, options.parentalControl);
    // Nobody in the Mac needs to see the passwords' hashes.
    mac.file(std::string(kMachineFile), encode(describe(mac, options)), {0600});
    workshop.finish();
    return 0;
}

}  // namespace Simulator
