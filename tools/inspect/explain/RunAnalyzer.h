#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <vector>

#include "inspect/explain/LogEntry.h"
#include "inspect/explain/Run.h"
#include "inspect/explain/StepMatcher.h"

namespace Inspect {

/// Assembles the runs of the uninstaller from a log's entries. Memory does not grow with the log: the last
/// kMostRuns runs are kept, with a bounded number of words and details each.
class RunAnalyzer {
  public:
    static constexpr std::size_t kMostRuns = 100;

    /// Takes the log's entries in order.
    void add(const LogEntry& entry);

    /// How far a run has come.
    struct Standing {
        std::size_t run = 0;  ///< its number
        std::vector<StepReport> steps;
        /// This many of the steps, from the first on, are over.
        std::size_t settled = 0;
    };
    /// The current state of the last run whose helper has written something; nothing before that.
    [[nodiscard]] std::optional<Standing> standing() const;

    /// The runs in the order in which they began. Nothing may be added afterwards.
    [[nodiscard]] std::vector<Run> finish();

  private:
    /// How many lines that belong to no step are kept for each run.
    static constexpr std::size_t kMostWords = 50;
    static constexpr std::size_t kLongestWords = 4096;

    struct Open {
        Run run;
        std::optional<StepMatcher> steps;
        /// The uninstaller has written its last line.
        bool hasOutcome = false;
        /// The reason given by its last line but one.
        std::optional<RunEnding> reason;
    };

    void addFromUninstaller(const LogEntry& entry);
    void addFromHelper(const LogEntry& entry);
    void addFromOthers(const LogEntry& entry);
    void conclude(Open& open, bool finished) const;

    [[nodiscard]] Open& begin(const LogEntry& entry);
    [[nodiscard]] Open* runOfUninstaller(std::int32_t pid);
    [[nodiscard]] Open* runOfHelper(std::int32_t pid);
    /// The first run that still waits for a helper.
    [[nodiscard]] Open* runWithoutHelper();
    static void note(Open& open, const LogEntry& entry);
    static void touch(Open& open, const LogEntry& entry);

    std::deque<Open> runs_;
    std::size_t begun_ = 0;
    /// Has taken no line: making one for each line that may belong to no step would take long.
    StepMatcher fresh_;
};

}  // namespace Inspect
