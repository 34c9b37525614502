#pragma once

#include <string>
#include <vector>

#include "Definitions.h"

namespace Inspect {

// Manual pages and completions, all from the definitions of the commands.

/// sentrel-inspect(1).
[[nodiscard]] std::string programManual();
/// sentrel-inspect-COMMAND(1).
[[nodiscard]] std::string commandManual(const CommandDefinition& command);

/// Completion for bash, from 3.2 on, the version on a Mac.
[[nodiscard]] std::string bashCompletion();
/// Completion for zsh.
[[nodiscard]] std::string zshCompletion();

}  // namespace Inspect
