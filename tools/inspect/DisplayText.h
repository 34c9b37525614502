#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Inspect {

/// Stands for an empty property.
inline constexpr std::string_view kNone = "(none)";

/// `text` for one line on a terminal; see Base::displayable.
[[nodiscard]] std::string shown(std::string_view text);

/// The same, or "(none)".
[[nodiscard]] std::string shown(const std::optional<std::string>& text);

/// Columns of a text from `shown`, one for each character.
[[nodiscard]] std::size_t columnsOf(std::string_view text);

/// Appends `cell`, then spaces up to `width` columns and two more.
void appendCell(std::string& line, std::string_view cell, std::size_t width);

/// Appends `line` without its trailing blanks, and a line feed.
void appendLine(std::string& output, std::string_view line);

}  // namespace Inspect
