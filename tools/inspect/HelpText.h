#pragma once

#include <string>

#include "Definitions.h"

namespace Inspect {

/// The end of a command's help: its text, its examples and its exit statuses.
[[nodiscard]] std::string helpEpilogue(const CommandDefinition& command);

/// The same for the program.
[[nodiscard]] std::string programEpilogue();

/// Two examples for the program as a whole.
[[nodiscard]] const std::vector<ExampleDefinition>& programExamples();

/// The exit statuses of all commands, each once.
[[nodiscard]] const std::vector<StatusDefinition>& programStatuses();

/// `text` broken between words so that no line has more than `width` columns if possible; each line begins
/// with `indent` blanks. Line breaks in `text` stay.
[[nodiscard]] std::string wrapped(std::string_view text, std::size_t width, std::size_t indent);

}  // namespace Inspect
