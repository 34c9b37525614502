#pragma once

#include <string>
#include <string_view>

namespace Base {

/// `text` as it may stand in a line of a log or of a terminal. Logs and tools' output call this once, on
/// whole texts; everything before that (paths, error descriptions, what a peer sent) stays as it is, so
/// nothing is escaped twice.
///
/// Each byte of the following becomes \xNN (two lower-case digits): control characters, line and paragraph
/// separators, marks that change the direction of a text, other characters that cannot be seen, and whatever
/// is not valid UTF-8. A backslash becomes \x5c where "xNN" follows it, so that the result says exactly what
/// the text was. Everything else stays: spaces, accents, Japanese, other backslashes.
[[nodiscard]] std::string displayable(std::string_view text);

/// The same for a text of several lines: line feeds and tabs stay.
[[nodiscard]] std::string displayableLines(std::string_view text);

}  // namespace Base
