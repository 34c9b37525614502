#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Base {

/// The UTF-16 form of the UTF-8 `text`. Each byte that is not part of valid UTF-8 becomes U+FFFD.
[[nodiscard]] std::u16string utf16FromUTF8(std::string_view text);

/// The UTF-8 form of `units`; nothing if half of a surrogate pair is missing.
[[nodiscard]] std::optional<std::string> utf8FromUTF16(std::u16string_view units);

/// The UTF-8 form of `units`, with U+FFFD for every unpaired surrogate.
[[nodiscard]] std::string utf8FromUTF16WithReplacements(std::u16string_view units);

}  // namespace Base
