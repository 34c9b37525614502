#pragma once

#include <optional>
#include <string>
#include <vector>

#include "RecordJson.h"
#include "Terminal.h"
#include "Verdict.h"

namespace Inspect {

/// The result of a scan.
struct Scan {
    Inventory::Inventory inventory;
    /// The version of the uninstaller that this program belongs to.
    Inventory::Version uninstaller;
    /// The contents of each place of the inventory; empty if they were not counted.
    std::vector<Platform::TreeSize> sizes;

    [[nodiscard]] Inventory::Verdict verdict() const { return Inventory::verdictOf(inventory, uninstaller); }
};

/// A scan for people: a sentence, then a section for everything that was found, the lines that remove
/// leftovers, and what was not or could not be looked at. Only the lines of shell may be wider than `width`:
/// they are not broken.
[[nodiscard]] std::string scanText(const Scan& scan, bool inColour, std::size_t width = kReportWidth);

/// A scan for a log: one line for everything that was found and everything that could not be looked at, and a
/// last line with the result.
[[nodiscard]] std::string verifyText(const Scan& scan);

/// A scan as documented in docs/sentrel-inspect.md.
[[nodiscard]] Json scanJson(const Scan& scan);

/// The lines of shell that remove leftovers, one on each line.
[[nodiscard]] std::string removalLines(const Scan& scan);

}  // namespace Inspect
