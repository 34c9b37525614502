// The installer helper is killed in the middle of its list; a second run makes it good.

#include <sstream>
#include <stdexcept>

#include "Rows.h"
#include "TortureMac.h"

namespace Torture {

namespace {

constexpr const char* kNoPauses = "helper-pause=0.05";
/// One of so many rounds at random moments keeps the pauses of 5 seconds.
constexpr int kRealPausesEvery = 10;

std::string killer(const std::string& moment, long microseconds) {
    return kTools + "/helper-killer " + moment + " " + std::to_string(microseconds) + " " +
           quoted(kUninstaller);
}

/// Judges the end after a second run.
void judge(Row& row, int round, const TortureMac& mac, const Inventory& undisturbed,
           const std::string& when) {
    const End end = mac.end(undisturbed);
    const std::string word = mac.lastWord();
    if (end.kind == End::Kind::clean && (word == "Uninstallation finished." || mac.foundNothing())) {
        row.count("clean");
    } else if (end.kind == End::Kind::helpersLeft && mac.foundNothing()) {
        row.exception("nothing was installed any more, the helpers' tools stay");
    } else {
        row.lost(round,
                 when + ", the second run ended with \"" + word + "\": " + end.differences + mac.endOfLog());
    }
}

/// How long the helper's list takes in an undisturbed run, in microseconds: until the first application has
/// gone, and until the end.
struct Duration {
    long removal = 0;
    long end = 0;
};

Duration measure(const std::string& fault) {
    TortureMac mac;
    std::istringstream said(
        mac.shellWith(fault.empty() ? std::vector<std::string>{} : std::vector{fault}, killer("never", 0))
            .out);
    std::string word;
    Duration duration;
    said >> word >> duration.removal >> word >> duration.end;
    if (duration.removal <= 0 || duration.end <= duration.removal) {
        throw std::runtime_error("an undisturbed run cannot be measured: " + said.str());
    }
    return duration;
}

struct Moment {
    std::string from;
    long microseconds = 0;
};

/// Half of the moments lie in the stopping of jobs and programs, half in the removal of files, which takes
/// less time by far. A little behind the end, the helper is about to leave.
Moment momentOf(std::mt19937_64& chance, const Duration& duration) {
    const auto upTo = [&chance](long limit) { return std::uniform_int_distribution<long>(0, limit)(chance); };
    return upTo(1) == 0 ? Moment{"start", upTo(duration.removal)}
                        : Moment{"removal", upTo((duration.end - duration.removal) * 6 / 5)};
}

}  // namespace

void killAfterEachCommand(Row& row) {
    const Inventory undisturbed = undisturbedInventory();
    row.run([&](int round) {
        const int command = round % kCommands + 1;
        TortureMac mac;
        // The killer stays beside the uninstaller, which would wait a minute for a helper that is dead.
        static_cast<void>(mac.shellWith({kNoPauses, "helper-exit-after=" + std::to_string(command)},
                                        kTools + "/helper-killer watch 0 " + quoted(kUninstaller)));
        static_cast<void>(mac.uninstall({kNoPauses}));
        judge(row, round, mac, undisturbed, "killed after command " + std::to_string(command));
    });
}

void killAtRandomMoments(Row& row) {
    const Inventory undisturbed = undisturbedInventory();
    const Duration quick = measure(kNoPauses);
    const Duration real = measure("");
    row.run([&](int round) {
        std::mt19937_64 chance = row.chance(round);
        const bool pauses = round % kRealPausesEvery == 0;
        const Moment moment = momentOf(chance, pauses ? real : quick);
        const bool sameBoot = chance() % 2 == 0;
        std::vector<std::string> faults;
        if (!pauses) {
            faults.emplace_back(kNoPauses);
        }
        const std::string kill = killer(moment.from, moment.microseconds);
        const std::string again = quoted(kUninstaller) + " --silent";
        TortureMac mac;
        const auto first = mac.shellWith(faults, sameBoot ? kill + "; " + again : kill);
        if (!sameBoot) {
            static_cast<void>(mac.shellWith(faults, again));
        }
        if (first.out.empty()) {
            throw std::runtime_error("the killer said nothing, status " + std::to_string(first.status) +
                                     ": " + first.err);
        }
        row.count(first.out.starts_with("killed") ? "in its list" : "after its list");
        row.count(sameBoot ? "second run at once" : "second run after a restart");
        judge(row, round, mac, undisturbed,
              "killed " + moment.from + "+" + std::to_string(moment.microseconds) + " us" +
                  (sameBoot ? ", same boot" : ""));
    });
}

}  // namespace Torture
