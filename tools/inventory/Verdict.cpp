#include "Verdict.h"

#include <algorithm>
#include <array>
#include <compare>

#include "Base/FatalError.h"
#include "InstallCommon/ProductVersionUtil.h"

namespace Inventory {

namespace {

bool hasProgram(const Inventory& inventory) {
    return std::any_of(inventory.places.begin(), inventory.places.end(),
                       [](const Place& place) { return isProgram(place.role); });
}

bool isBelow(const std::string& path, const std::string& folder) {
    return path.starts_with(folder) && path[folder.size()] == '/';
}

bool isInside(const Place& place, const Place& other) {
    return std::any_of(place.paths.begin(), place.paths.end(), [&other](const std::string& path) {
        return std::any_of(other.paths.begin(), other.paths.end(),
                           [&path](const std::string& folder) { return isBelow(path, folder); });
    });
}

std::string kindOf(const Place& place) {
    switch (place.kind) {
        case Platform::ItemKind::file:
            return "file";
        case Platform::ItemKind::folder:
            return "folder";
        case Platform::ItemKind::link:
            return "link";
        case Platform::ItemKind::other:
            return "item";
    }
    Base::fatalError("unexpected enumeration value");
}

Leftover leftover(const Place& place, const std::string& root) {
    const bool isFolder = place.kind == Platform::ItemKind::folder;
    std::string line = isFolder ? "sudo rm -rf" : "sudo rm -f";
    for (const std::string& path : place.paths) {
        line += " " + shellWord(root + path);
    }
    const std::string path = root + place.paths.front();
    return {kindOf(place) + " " + path, line, kindOf(place), path};
}

}  // namespace

UninstallerAnswer uninstallerAnswer(const Inventory& inventory, const Version& uninstaller) {
    if (!inventory.hasConsole) {
        return inventory.hasInstallationFolder ? UninstallerAnswer::uninstalls
                                               : UninstallerAnswer::refusesAbsent;
    }
    const bool isNewer = inventory.version && std::is_gt(InstallCommon::compareNumerically(
                                                  inventory.version->text(), uninstaller.text()));
    return isNewer ? UninstallerAnswer::refusesNewer : UninstallerAnswer::uninstalls;
}

Verdict verdictOf(const Inventory& inventory, const Version& uninstaller) {
    if (hasProgram(inventory) &&
        uninstallerAnswer(inventory, uninstaller) != UninstallerAnswer::refusesAbsent) {
        return Verdict::installed;
    }
    if (!inventory.blind.empty()) {
        return Verdict::unknown;
    }
    const bool hasLiveJob = std::any_of(inventory.jobs.begin(), inventory.jobs.end(),
                                        [](const RegisteredJob& job) { return !job.filesAreGone; });
    if (!inventory.places.empty() || !inventory.processes.empty() || hasLiveJob) {
        return Verdict::leftovers;
    }
    return inventory.jobs.empty() && inventory.extensions.empty() ? Verdict::nothing : Verdict::restart;
}

int exitStatusOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::nothing:
            return 0;
        case Verdict::unknown:
            return 1;
        case Verdict::installed:
            return 3;
        case Verdict::leftovers:
            return 4;
        case Verdict::restart:
            return 5;
    }
    Base::fatalError("unexpected enumeration value");
}

std::string_view nameOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::nothing:
            return "nothing";
        case Verdict::unknown:
            return "unknown";
        case Verdict::installed:
            return "installed";
        case Verdict::leftovers:
            return "leftovers";
        case Verdict::restart:
            return "restart";
    }
    Base::fatalError("unexpected enumeration value");
}

std::string_view nameOf(UninstallerAnswer answer) {
    switch (answer) {
        case UninstallerAnswer::uninstalls:
            return "uninstalls";
        case UninstallerAnswer::refusesAbsent:
            return "refuses: not installed";
        case UninstallerAnswer::refusesNewer:
            return "refuses: newer version installed";
    }
    Base::fatalError("unexpected enumeration value");
}

std::vector<std::string> generationsOf(const Inventory& inventory) {
    constexpr std::array<std::string_view, 7> kInOrder{"norvik-apps", "antivir",    "antivirus", "snt-plain",
                                                       "snt-folder",  "snt-bundle", "current"};
    std::vector<std::string> found;
    for (const std::string_view generation : kInOrder) {
        const bool isThere =
            std::any_of(inventory.places.begin(), inventory.places.end(), [generation](const Place& place) {
                return std::find(place.generations.begin(), place.generations.end(), generation) !=
                       place.generations.end();
            });
        if (isThere) {
            found.emplace_back(generation);
        }
    }
    return found;
}

std::vector<Leftover> leftoversOf(const Inventory& inventory, Verdict verdict) {
    std::vector<Leftover> leftovers;
    if (verdict != Verdict::leftovers && verdict != Verdict::restart) {
        return leftovers;
    }
    for (const RegisteredJob& job : inventory.jobs) {
        leftovers.push_back({"job " + job.target(), "sudo launchctl bootout " + shellWord(job.target()),
                             "job", job.target()});
    }
    for (const RunningProcess& process : inventory.processes) {
        const std::string pid = std::to_string(process.pid);
        leftovers.push_back({"process " + pid + " " + process.path, "sudo kill -9 " + pid, "process", pid});
    }
    for (const std::string& identifier : inventory.extensions) {
        leftovers.push_back({"loaded kernel extension " + identifier + " (or restart the Mac)",
                             "sudo kextunload -b " + shellWord(identifier), "extension", identifier});
    }
    for (const Place& place : inventory.places) {
        if (std::none_of(inventory.places.begin(), inventory.places.end(),
                         [&place](const Place& other) { return isInside(place, other); })) {
            leftovers.push_back(leftover(place, inventory.root));
        }
    }
    return leftovers;
}

std::string shellWord(std::string_view text) {
    constexpr std::string_view kPlain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-+:@%,=";
    if (!text.empty() && text.find_first_not_of(kPlain) == std::string_view::npos) {
        return std::string(text);
    }
    std::string word = "'";
    for (const char c : text) {
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return word + "'";
}

}  // namespace Inventory
