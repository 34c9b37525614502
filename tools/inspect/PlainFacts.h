#pragma once

#include <string>

#include "ScanReport.h"

namespace Inspect {

/// A scan for a shell script: one fact on each line, its words divided by tabs, as documented in
/// docs/sentrel-inspect.md. No word is empty, and none holds a tab or a line break, whatever it came from.
[[nodiscard]] std::string plainFacts(const Scan& scan);

}  // namespace Inspect
