#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <random>
#include <string>

namespace Torture {

/// How much of a row is wanted: the first limit that is reached ends it, after the rounds that run then.
struct Limits {
    int rounds = 1;
    std::chrono::seconds time{60};
    int lanes = 1;
    std::uint64_t seed = 1;
};

/// One row of the table: hands out rounds and counts what came of them. Usable from any thread.
class Row {
  public:
    Row(std::string name, const Limits& limits);

    [[nodiscard]] const Limits& limits() const { return limits_; }
    /// Random numbers of one round; the same for the same seed, row and round.
    [[nodiscard]] std::mt19937_64 chance(int round) const;

    /// Does `work` for the rounds 0, 1, ... until a limit is reached, in as many threads as there are lanes.
    /// What `work` throws is a loss of its round. A round counts as `units`, which is what the limit is
    /// about.
    void run(const std::function<void(int round)>& work, int units = 1);

    /// Adds to a figure that the row prints beside its count of rounds.
    void count(const std::string& figure, long amount = 1);
    /// Sets a figure to `value` when that is higher.
    void highest(const std::string& figure, long value);
    /// A result that the documents name as an exception; not a loss.
    void exception(const std::string& which) { count("documented exception: " + which); }
    /// Something was lost. Printed on standard error at once, with what it takes to repeat it.
    void lost(int round, const std::string& what);

    /// Prints the row, its columns separated by tabs: name, rounds done, rounds wanted, losses, figures.
    /// Returns whether nothing was lost and something was done.
    [[nodiscard]] bool print() const;

  private:
    void doRounds(const std::function<void(int round)>& work, int units);
    [[nodiscard]] bool takeRound(int& round, int units);

    std::string name_;
    Limits limits_;
    std::chrono::steady_clock::time_point end_;
    mutable std::mutex mutex_;
    int taken_ = 0;
    int done_ = 0;
    long losses_ = 0;
    std::map<std::string, long> figures_;
};

}  // namespace Torture
