#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Inventory {

/// The answer of launchctl's "print" about one job.
struct PrintedJob {
    /// The process id while it runs.
    std::optional<std::int32_t> pid;
    /// The property list that it was loaded from, and its executable; empty if launchctl names none.
    std::string plist;
    std::string program;

    friend bool operator==(const PrintedJob&, const PrintedJob&) = default;
};

/// The labels of the jobs that "launchctl print DOMAIN" lists, in its order. Returns nothing if the text has
/// no list of services, or one without an end.
[[nodiscard]] std::optional<std::vector<std::string>> printedLabels(std::string_view text);

/// The answer of "launchctl print DOMAIN/LABEL"; only the job's own lines count, not those of nested
/// blocks.
[[nodiscard]] PrintedJob printedJob(std::string_view text);

/// A label that somebody has enabled or disabled by hand.
struct PrintedOverride {
    std::string label;
    bool isDisabled = false;

    friend bool operator==(const PrintedOverride&, const PrintedOverride&) = default;
};

/// The answer of "launchctl print-disabled DOMAIN", in both existing spellings: "true" or "disabled", "false"
/// or "enabled". Returns nothing if the text has no such list.
[[nodiscard]] std::optional<std::vector<PrintedOverride>> printedOverrides(std::string_view text);

}  // namespace Inventory
