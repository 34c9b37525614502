// torture ROW ROUNDS SECONDS LANES SEED: does one row of the torture table and prints it; see Row::print.
// scripts/torture.sh calls it. Exit status: 0 nothing lost, 1 something lost, 2 the command line makes no
// sense.

#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <string>

#include "Rows.h"

namespace {

using namespace Torture;

struct Kind {
    std::string title;
    std::function<void(Row&)> work;
};

const std::map<std::string, Kind>& kinds() {
    static const std::map<std::string, Kind> all{
        {"commands", {"helper killed after each command", killAfterEachCommand}},
        {"moments", {"helper killed at random moments", killAtRandomMoments}},
        {"peers", {"foreign peers", foreignPeers}},
        {"folders", {"disturbed folders", disturbFolders}},
        {"two", {"two uninstallations at once", [](Row& row) { uninstallAtOnce(row, 2); }}},
        {"ten", {"ten uninstallations at once", [](Row& row) { uninstallAtOnce(row, 10); }}},
        {"refused", {"refused uninstaller started again", refuseAgain}},
        {"blessings", {"blessings across the idle boundary", blessAgain}},
    };
    return all;
}

int doRow(const Kind& kind, const Limits& limits) {
    Row row(kind.title, limits);
    try {
        kind.work(row);
    } catch (const std::exception& problem) {
        row.lost(-1, problem.what());
    }
    return row.print() ? 0 : 1;
}

}  // namespace

int main(int argc, char* argv[]) {
    try {
        const auto kind = kinds().find(argc == 6 ? argv[1] : "");
        if (kind == kinds().end()) {
            throw std::invalid_argument("usage: torture ROW ROUNDS SECONDS LANES SEED");
        }
        Limits limits;
        limits.rounds = std::stoi(argv[2]);
        limits.time = std::chrono::seconds(std::stol(argv[3]));
        limits.lanes = std::stoi(argv[4]);
        limits.seed = std::stoull(argv[5]);
        return doRow(kind->second, limits);
    } catch (const std::exception& problem) {
        std::cerr << "torture: " << problem.what() << std::endl;
        return 2;
    }
}
