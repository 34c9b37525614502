// Several uninstallations of one Mac at the same time.

#include <algorithm>

#include "Rows.h"
#include "TortureMac.h"
#include "support/InstallerLine.h"

namespace Torture {

namespace {

using TestSupport::installerLine;

constexpr int kCrowdSeconds = 100;
/// Called the support helper within the milliseconds in which another run took it away; says so and ends.
constexpr const char* kMissed = "documented exception: called the support helper while it was taken away";

std::string atOnce(int uninstallers) {
    const std::string one = "{ timeout -s KILL " + std::to_string(kCrowdSeconds) + " " +
                            quoted(kUninstaller) + " --silent || echo hung; } & ";
    std::string line;
    for (int number = 0; number < uninstallers; ++number) {
        line += one;
    }
    return line + "wait";
}

}  // namespace

void uninstallAtOnce(Row& row, int uninstallers) {
    const Inventory undisturbed = undisturbedInventory();
    row.run([&](int round) {
        TortureMac mac;
        const auto result = mac.shellWith({"helper-pause=0.5"}, atOnce(uninstallers));
        const auto lines = mac.messages("Uninstall Sentrel");
        const auto timesOf = [&lines](const std::string& text) {
            return std::count(lines.begin(), lines.end(), text);
        };
        const long finished = timesOf(installerLine("Uninstallation finished."));
        const long failed = timesOf(installerLine("Uninstallation failed."));
        const long refused = timesOf("Antivirus cannot be uninstalled");
        const long missed = timesOf("Failed to install Swift runtime support. Quitting...");
        row.count("finished", finished);
        row.count("found nothing any more", refused);
        row.count(kMissed, missed);
        const End end = mac.end(undisturbed);
        if (!result.out.empty() || finished + failed != uninstallers) {
            row.lost(round, std::to_string(finished) + " finished and " + std::to_string(failed) +
                                " failed; without an end: " + result.out);
        } else if (finished == 0 || failed != refused + missed) {
            row.lost(round, std::to_string(finished) + " finished, " + std::to_string(failed) + " failed; " +
                                std::to_string(refused) + " found nothing any more, " +
                                std::to_string(missed) + " lost the support helper" + mac.endOfLog());
        } else if (end.kind == End::Kind::lost || (end.kind == End::Kind::helpersLeft && failed == 0)) {
            row.lost(round, end.differences);
        } else if (end.kind == End::Kind::helpersLeft) {
            row.exception("a run that was refused leaves the helpers");
        } else {
            row.count("clean");
        }
    });
}

}  // namespace Torture
