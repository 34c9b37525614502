#pragma once

#include <string>

#include "ScanReport.h"

namespace Inspect {

/// A scan for a shell script: one fact per line, its words separated by tabs, as documented in
/// docs/sentrel-inspect.md. No word is empty, and none contains a tab or a line break, whatever its origin.
[[nodiscard]] std::string plainFacts(const Scan& scan);

}  // namespace Inspect
