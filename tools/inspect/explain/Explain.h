#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "inspect/explain/Run.h"
#include "inspect/explain/RunAnalyzer.h"

namespace Inspect {

/// Reads a system log and returns the runs of the uninstaller in it; "-" is standard input. Reads as a
/// stream: memory does not grow with the log, of whose runs the last RunAnalyzer::kMostRuns are returned.
/// Returns nothing and sets `refusal` to a few words if the file cannot be read or contains no line of a log.
/// `notice` is set to a sentence if the log is incomplete or has more runs.
/// `whileReading` is called after each entry.
[[nodiscard]] std::optional<std::vector<Run>> runsOfLog(
    const std::string& file, std::string& refusal, std::string& notice,
    const std::function<void(const RunAnalyzer&)>& whileReading = nullptr);

}  // namespace Inspect
