#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Inspect {

/// The outcome of a step, or of one thing that a step does.
enum class StepOutcome : std::uint8_t {
    done,
    notThere,    ///< there was nothing to do
    failed,      ///< something of it remains
    unknown,     ///< the log does not tell
    notReached,  ///< the run ended before it
};

/// One action of a step, as the log shows it.
struct StepDetail {
    StepOutcome outcome = StepOutcome::unknown;
    /// Its object: a path, a job with its domain, a process id.
    std::string subject;
    /// Why it failed or had nothing to do; empty otherwise.
    std::string reason;
    /// The remedy for a failure; may be empty.
    std::string advice;
};

/// One of the list's commands in one run.
struct StepReport {
    /// From 1.
    std::size_t number = 0;
    /// The command's class and description.
    std::string className;
    std::string description;
    StepOutcome outcome = StepOutcome::notReached;
    std::vector<StepDetail> details;
    /// How many more the log tells of.
    std::size_t detailsLeftOut = 0;
    /// Times of its first and last line, as in LogEntry; nothing for a step without one.
    std::optional<double> first;
    std::optional<double> last;
    /// Whether a daemon was stopped, after which the helper pauses for 5 s.
    bool pauses = false;
};

}  // namespace Inspect
