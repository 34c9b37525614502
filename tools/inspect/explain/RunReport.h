#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "inspect/RecordJson.h"
#include "inspect/explain/Run.h"

namespace Inspect {

/// Runs for people, at most `width` columns wide where words allow it: for each run its beginning and end,
/// its result, what failed and why, and what to do. With `allSteps` every step is shown with its actions.
/// Foreign text is escaped (see `shown`).
[[nodiscard]] std::string runReport(const std::vector<Run>& runs, bool allSteps, std::size_t width);

/// The same as a JSON document, every step included:
///   formatVersion   1
///   runs            for each run: number (from 1, of the log's runs), ending, result, advice (array), began,
///                   ended, seconds, uninstaller and helper (process ids), consoleFound, reached,
///                   helperFinished, helperDied, words (array), steps
///   steps           number, class, description, outcome, pauses, details, detailsLeftOut
///   details         outcome, subject, reason, advice
/// Values that the log does not contain are null.
[[nodiscard]] Json runJson(const std::vector<Run>& runs);

/// What is said of a step's details that are left out.
[[nodiscard]] std::string leftOutText(const StepReport& step);

/// The same as one HTML page that needs nothing else: no script, no network, no file.
[[nodiscard]] std::string runPage(const std::vector<Run>& runs);

}  // namespace Inspect
