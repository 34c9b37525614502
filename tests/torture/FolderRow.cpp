// Folders that are full, cannot be written, cannot be changed, go away or grow while an uninstallation runs.

#include <algorithm>

#include "Rows.h"
#include "TortureMac.h"

namespace Torture {

namespace {

constexpr int kFolderSeconds = 100;

const std::vector<std::string>& productItems() {
    static const std::vector<std::string> items{"/Applications/Sentrel.app",
                                                "/Applications/Norvik",
                                                "/Applications/NORVIK/SNT",
                                                "/Library/Application Support/NORVIK/SNT",
                                                "/Library/Application Support/Norvik/AntiVir",
                                                "/Library/Extensions/FileAccessFilter.kext",
                                                "/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
                                                "/Users/Shared/Norvik"};
    return items;
}

/// One way to be in an uninstallation's way.
struct Disturbance {
    std::string name;
    std::vector<std::string> faults;
    /// A line of shell that begins it, in the same boot; it ends with that boot.
    std::string begin;
    /// Where something may be left until the next run; empty: nowhere.
    std::string resists;
    /// Whether the first run is refused before its list.
    bool refused = false;
};

Disturbance fullTools() {
    const std::string tools = "/Library/PrivilegedHelperTools";
    return {"disk full for the helpers' tools",
            {},
            "mount -t tmpfs -o size=64k none " + tools + " || echo no mount; cat /dev/zero >" + tools +
                "/full 2>/dev/null",
            "",
            true};
}

Disturbance readOnly(const std::string& item) {
    const std::string word = quoted(item);
    return {
        "read-only",
        {},
        "mount --bind " + word + " " + word + " && mount -o remount,bind,ro " + word + " || echo no mount",
        item};
}

Disturbance growing(std::mt19937_64& chance) {
    const bool application = chance() % 2 == 0;
    const std::string folder =
        application ? "/Applications/Sentrel.app/Contents" : "/Library/Application Support/NORVIK/SNT";
    return {"growing", {}, kTools + "/folder-rival grow 20000 " + quoted(folder) + " &", folder};
}

Disturbance vanishing(std::mt19937_64& chance) {
    std::string line = kTools + "/folder-rival vanish " + std::to_string(chance() % 40'000);
    for (const std::string& item : productItems()) {
        if (item.find(".plist") == std::string::npos) {
            line += " " + quoted(item);
        }
    }
    return {"vanishing", {}, line + " &", ""};
}

/// Needs a real root and a file system that knows the flag.
bool immutableWorks() {
    TortureMac mac(false);
    return mac.run({"immutable=/Applications"}, {"true"}).status == 0;
}

Disturbance disturbance(int round, std::mt19937_64& chance, bool withImmutable) {
    const std::string& item = productItems()[chance() % productItems().size()];
    constexpr int kKinds = 6;
    switch (round % kKinds) {
        case 0:
            return {"disk full for the runtime package", {"disk-full"}, "", "", true};
        case 1:
            return fullTools();
        case 2:
            return readOnly(item);
        case 3:
            if (!withImmutable) {
                return readOnly(item);
            }
            return {"immutable", {"immutable=" + item}, "", item};
        case 4:
            return vanishing(chance);
        default:
            return growing(chance);
    }
}

/// Whether `path` is `item`, below it or on the way to it.
bool belongsTo(const std::string& path, const std::string& item) {
    return path == item || path.starts_with(item + "/") || item.starts_with(path + "/");
}

/// Leftovers although nothing resisted there.
std::string leftElsewhere(const TortureMac& mac, const Inventory& undisturbed, const std::string& resists) {
    std::string text;
    for (const std::string& path : mac.left(undisturbed)) {
        if (!isHelperFile(path) && (resists.empty() || !belongsTo(path, resists))) {
            text += " " + path;
        }
    }
    return text;
}

void checkFirstRun(Row& row, int round, const TortureMac& mac, const Inventory& undisturbed,
                   const Disturbance& disturbance, const TestSupport::ProgramResult& result) {
    const std::string word = mac.lastWord();
    const std::string expected = disturbance.refused ? "Uninstallation failed." : "Uninstallation finished.";
    if (!result.out.empty() || word != expected) {
        row.lost(round, disturbance.name + " " + disturbance.resists + ": the run ended with \"" + word +
                            "\" " + result.out + result.err + mac.endOfLog());
    }
    const auto items = mac.left(undisturbed);
    const bool resisted = std::any_of(items.begin(), items.end(), [&disturbance](const std::string& path) {
        return !disturbance.resists.empty() && belongsTo(path, disturbance.resists);
    });
    row.count("left something until the second run", resisted ? 1 : 0);
    const std::string harmed = mac.harmed(undisturbed);
    const std::string left = disturbance.refused ? "" : leftElsewhere(mac, undisturbed, disturbance.resists);
    if (!harmed.empty() || !left.empty()) {
        row.lost(round,
                 disturbance.name + " " + disturbance.resists + ": harmed:" + harmed + "; left:" + left);
    }
}

void checkSecondRun(Row& row, int round, const TortureMac& mac, const Inventory& undisturbed,
                    const Disturbance& disturbance) {
    const End end = mac.end(undisturbed);
    if (end.kind == End::Kind::clean) {
        row.count("clean");
    } else if (mac.foundNothing() && mac.harmed(undisturbed).empty() &&
               leftElsewhere(mac, undisturbed, disturbance.resists).empty()) {
        row.exception(end.kind == End::Kind::helpersLeft
                          ? "nothing was left to uninstall, the second run leaves the helpers"
                          : "what had resisted is not a folder of the product; the second run finds nothing");
    } else {
        row.lost(round, disturbance.name + " " + disturbance.resists + ", the second run ended with \"" +
                            mac.lastWord() + "\": " + end.differences + mac.endOfLog());
    }
}

}  // namespace

void disturbFolders(Row& row) {
    const Inventory undisturbed = undisturbedInventory();
    const bool withImmutable = immutableWorks();
    row.count(withImmutable ? "immutable" : "immutable items are not possible here", 0);
    row.run([&](int round) {
        std::mt19937_64 chance = row.chance(round);
        const Disturbance disturbance = Torture::disturbance(round, chance, withImmutable);
        std::vector<std::string> faults{"helper-pause=0.05"};
        faults.insert(faults.end(), disturbance.faults.begin(), disturbance.faults.end());
        const std::string uninstaller = "timeout -s KILL " + std::to_string(kFolderSeconds) + " " +
                                        quoted(kUninstaller) + " --silent || echo hung";
        TortureMac mac;
        const auto first =
            mac.shellWith(faults, disturbance.begin + (disturbance.begin.empty() ? "" : "\n") + uninstaller);
        row.count(disturbance.name);
        checkFirstRun(row, round, mac, undisturbed, disturbance, first);
        static_cast<void>(mac.uninstall({"helper-pause=0.05"}));
        checkSecondRun(row, round, mac, undisturbed, disturbance);
    });
}

}  // namespace Torture
