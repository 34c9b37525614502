#pragma once

#include <string>

#include "Plan.h"
#include "RecordJson.h"
#include "Terminal.h"

namespace Inspect {

/// A plan for people: each step that finds something, or every one with `all`, with its findings under it;
/// then the sum, and what was not or could not be looked at.
[[nodiscard]] std::string planText(const Plan& plan, bool all, std::size_t width = kReportWidth);

/// A plan as documented in docs/sentrel-inspect.md.
[[nodiscard]] Json planJson(const Plan& plan, bool all);

}  // namespace Inspect
