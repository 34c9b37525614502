#pragma once

#include <cstddef>
#include <string>

#include "InstallCommon/Command.h"

namespace Inspect {

/// A command list as a table for people: number, class, description, operands.
///
/// If everything fits into `width` columns, the operands are the fourth column; otherwise they stand under
/// their command, indented. A command with several operands has one line for each. An empty property is
/// "(none)". No line ends in a blank, and nothing in a command can break its line (see `shown`).
[[nodiscard]] std::string commandTable(const InstallCommon::CommandList& commands, std::size_t width);

}  // namespace Inspect
