// Clients that come again around the moment when an idle helper leaves.

#include <algorithm>
#include <iomanip>
#include <sstream>

#include "Rows.h"
#include "TortureMac.h"
#include "support/InstallerLine.h"

namespace Torture {

namespace {

using TestSupport::installerLine;

/// An idle helper leaves after 2 seconds: clients come from 1.9 to 2.1 seconds after the last one.
constexpr int kEarliest = 1900;
constexpr int kLatest = 2100;
constexpr int kRunsPerMac = 18;
constexpr int kBlessingSeconds = 75;
/// Far beyond what the blessings of one Mac take.
constexpr int kClientSeconds = 300;

std::string seconds(int milliseconds) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(3) << milliseconds / 1000.0;
    return text.str();
}

/// Starts the uninstaller again and again; prints "hung" for each that does not end by itself.
std::string refusedRuns(std::mt19937_64& chance, int runs) {
    std::uniform_int_distribution<int> moment(kEarliest, kLatest);
    std::string line;
    for (int run = 0; run < runs; ++run) {
        line += "sleep " + seconds(moment(chance)) + "; timeout -s KILL " + std::to_string(kBlessingSeconds) +
                " " + quoted(kUninstaller) + " --silent || echo hung; ";
    }
    return line;
}

/// Judges the log of `runs` uninstallers that had nothing to uninstall; every line of theirs is looked at.
void judgeRefusals(Row& row, int round, const TortureMac& mac, long runs, long hung) {
    const auto lines = mac.messages("Uninstall Sentrel");
    const auto timesOf = [&lines](const std::string& text) {
        return std::count(lines.begin(), lines.end(), text);
    };
    const long refused = timesOf("Antivirus cannot be uninstalled");
    const long unblessed = timesOf("Helper authorization and blessing failed. Quitting...");
    const long broken = timesOf("Failed to install Swift runtime support. Quitting...");
    row.count("runs", runs);
    row.count("refused as they should be", refused);
    row.count("blessings failed", unblessed);
    row.count("connections broken", broken);
    row.count("hung", hung);
    if (refused != runs || timesOf(installerLine("Uninstallation failed.")) != runs ||
        lines.size() != static_cast<std::size_t>(runs) * 2) {
        row.lost(round, std::to_string(runs) + " runs: " + std::to_string(refused) + " refused, " +
                            std::to_string(unblessed) + " not blessed, " + std::to_string(broken) +
                            " lost their connection, " + std::to_string(hung) + " hung");
    }
}

}  // namespace

void refuseAgain(Row& row) {
    const auto work = [&row](int round) {
        std::mt19937_64 chance = row.chance(round);
        TortureMac mac(false);
        const auto result = mac.shellWith({}, refusedRuns(chance, kRunsPerMac));
        const long hung = std::count(result.out.begin(), result.out.end(), '\n');
        judgeRefusals(row, round, mac, kRunsPerMac, hung);
    };
    row.run(work, kRunsPerMac);
}

void blessAgain(Row& row) {
    row.run([&](int round) {
        TortureMac mac(false);
        mac.putInUninstallersPlace("bless-again");
        const auto result =
            mac.shellWith({}, "timeout -s KILL " + std::to_string(kClientSeconds) + " " +
                                  quoted(kUninstaller) + " " + std::to_string(row.chance(round)() % 10));
        std::istringstream said(result.out);
        for (std::string line; std::getline(said, line);) {
            if (line.starts_with("lost ")) {
                row.lost(round, line.substr(5));
            } else {
                row.count(line);
            }
        }
        if (result.status != 0 || result.out.empty()) {
            row.lost(round,
                     "the client ended with status " + std::to_string(result.status) + ": " + result.err);
        }
    });
}

}  // namespace Torture
