#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Check.h"

namespace Selftest {

/// "PASS  files.links   what was seen", with the name padded to `width`; no line break.
[[nodiscard]] std::string lineOf(std::string_view name, const Outcome& outcome, std::size_t width);

/// The outcome that a check's own process wrote with `printOutcome`; nothing when there is none in `output`.
[[nodiscard]] std::optional<Outcome> outcomeIn(std::string_view output);
/// Writes it to standard output at once: the process may end right after.
void printOutcome(const Outcome& outcome);

struct Result {
    std::string_view name;
    Outcome outcome;
};

/// How many of each group passed, failed and were skipped, and of all of them.
[[nodiscard]] std::string tableOf(const std::vector<Result>& results);

/// 0 when nothing failed, 1 otherwise: what could not be asked is no failure.
[[nodiscard]] int exitStatusOf(const std::vector<Result>& results);

}  // namespace Selftest
