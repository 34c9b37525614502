#pragma once

#include <string>
#include <vector>

#include "inspect/explain/Run.h"

namespace InspectUnitTests {

/// A test has a Run of its own.
using LogRun = Inspect::Run;

/// A step without lines of its own.
[[nodiscard]] Inspect::StepReport stepWith(std::size_t number, Inspect::StepOutcome outcome,
                                           const std::string& description);

/// The third of a log's runs: it timed out after 12.5 s at the fourth of five steps, one of each outcome.
[[nodiscard]] LogRun sampleRun();

}  // namespace InspectUnitTests
