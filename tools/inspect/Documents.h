#pragma once

#include <string>
#include <vector>

#include "Definitions.h"

namespace Inspect {

// Manual pages and completions, all from the definitions of the program's commands.

/// sentrel-inspect(1).
[[nodiscard]] std::string programManual(const std::vector<CommandDefinition>& commands);
/// sentrel-inspect-COMMAND(1).
[[nodiscard]] std::string commandManual(const CommandDefinition& command);

/// Completion for bash, from 3.2 on, the version on a Mac.
[[nodiscard]] std::string bashCompletion(const std::vector<CommandDefinition>& commands);
/// Completion for zsh.
[[nodiscard]] std::string zshCompletion(const std::vector<CommandDefinition>& commands);

}  // namespace Inspect
