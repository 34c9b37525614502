#pragma once

#include <string>
#include <string_view>

namespace Base {

/// `text` in a form that is safe in a line of a log or a terminal. Logs and tools' output call this once, on
/// whole texts; everything before that (paths, error descriptions, a peer's words) stays unescaped, so
/// nothing is escaped twice.
///
/// Each byte of the following becomes \xNN (two lower-case digits): control characters, line and paragraph
/// separators, marks that change the direction of a text, other invisible characters, and invalid UTF-8. A
/// backslash becomes \x5c if "xNN" follows it, so the result says exactly what the text was. Everything else
/// stays: spaces, accents, Japanese, other backslashes.
[[nodiscard]] std::string displayable(std::string_view text);

/// The same for a text of several lines: line feeds and tabs stay.
[[nodiscard]] std::string displayableLines(std::string_view text);

}  // namespace Base
