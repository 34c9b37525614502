#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/explain/StepReports.h"

namespace Inspect {

/// The way a run of the uninstaller ended, as far as the log tells.
enum class RunEnding : std::uint8_t {
    finished,             ///< the helper went through the whole list and the uninstaller knew
    notAuthorized,        ///< no authorization, or a helper could not be installed
    packageNotInstalled,  ///< the runtime support package
    nothingInstalled,     ///< refused: no product was found
    newerInstalled,       ///< refused: the installed product is newer
    timedOut,             ///< silent mode waited 60 s; the helper may have gone on
    cutOff,               ///< neither side says how it ended
};

/// One run of the uninstaller: its own lines and those of the helper that worked for it.
struct Run {
    /// Counts the log's runs from 1, in the order in which they began.
    std::size_t number = 0;
    RunEnding ending = RunEnding::cutOff;
    /// Times as the log writes them, and in seconds as in LogEntry: of the first and the last line.
    std::string began;
    std::string ended;
    std::optional<double> beganSeconds;
    std::optional<double> endedSeconds;

    /// The uninstaller's process; nothing if the log has only the helper's lines.
    std::optional<std::int32_t> uninstaller;
    /// The helper's process; nothing if the helper wrote no line of a list.
    std::optional<std::int32_t> helper;
    /// Whether the product's folders were found, and then whether its console was there.
    std::optional<bool> consoleFound;

    /// The list's steps; empty if the helper wrote no line of it.
    std::vector<StepReport> steps;
    /// The steps up to the last one that wrote a line.
    std::size_t reached = 0;
    /// Whether the helper went through the whole list, even after a time-out.
    bool helperFinished = false;
    /// Whether the log says that the helper's process died in this run.
    bool helperDied = false;

    /// Lines that say why something failed, or that belong to no step, in the log's order.
    std::vector<std::string> words;

    [[nodiscard]] std::size_t count(StepOutcome outcome) const;
};

/// "finished", "not-authorized", ...: the value in JSON.
[[nodiscard]] std::string_view nameOf(RunEnding ending);
[[nodiscard]] std::string_view nameOf(StepOutcome outcome);

/// A sentence that says how the run ended.
[[nodiscard]] std::string resultOf(const Run& run);
/// The remedies, a sentence each; empty if there is nothing left to do.
[[nodiscard]] std::vector<std::string> adviceFor(const Run& run);

/// "13 s", "2 min 5 s"; nothing if the log gives no times.
[[nodiscard]] std::optional<std::string> durationOf(const Run& run);

}  // namespace Inspect
