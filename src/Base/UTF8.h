#pragma once

#include <cstddef>
#include <string_view>

namespace Base {

/// Whether `bytes` are well-formed UTF-8 (no overlong forms, surrogates or values above U+10FFFF).
[[nodiscard]] bool isValidUTF8(std::string_view bytes);

/// One character and the bytes that it takes in UTF-8; no bytes when there is none.
struct UTF8Character {
    char32_t value;
    std::size_t bytes;
};

/// The well-formed character at the start of `bytes`, which are not empty.
[[nodiscard]] UTF8Character firstUTF8Character(std::string_view bytes);

}  // namespace Base
