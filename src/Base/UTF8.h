#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Base {

/// Whether every byte of `text` is below 0x80.
[[nodiscard]] bool isASCII(std::string_view text);

/// Whether `bytes` are well-formed UTF-8 (no overlong forms, surrogates or values above U+10FFFF).
[[nodiscard]] bool isValidUTF8(std::string_view bytes);

/// One character and the number of its bytes in UTF-8, 0 if there is none.
struct UTF8Character {
    char32_t value;
    std::size_t bytes;
};

/// The well-formed character at the start of `bytes`, which are not empty.
[[nodiscard]] UTF8Character firstUTF8Character(std::string_view bytes);

/// Whether `byte` is the second or a later byte of a character.
[[nodiscard]] constexpr bool continuesUTF8(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Appends the character `value`, at most U+10FFFF and not a surrogate.
void appendUTF8(std::string& text, char32_t value);

/// The largest number of bytes in a character.
inline constexpr std::size_t kLongestUTF8 = 4;

/// `text` if it fits into `limit` bytes; otherwise its first `limit` bytes without the character that they
/// would cut. Of invalid UTF-8, up to 4 more bytes are left out.
[[nodiscard]] std::string_view startOfUTF8(std::string_view text, std::size_t limit);

/// `text` without an incomplete character at its end.
[[nodiscard]] std::string_view withoutCutCharacter(std::string_view text);

}  // namespace Base
