#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Base {

/// Appends `path` as the path of a file URL: every byte that must not appear literally is escaped as %XX,
/// upper-case.
void appendEscapedPath(std::string& text, std::string_view path);

/// The bytes that `text`, the path of a file URL, encodes. Returns nothing for a broken escape, a NUL byte, a
/// query or a fragment.
[[nodiscard]] std::optional<std::string> unescapedPath(std::string_view text);

}  // namespace Base
