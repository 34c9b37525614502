#pragma once

#include <span>
#include <string>

namespace Platform::Posix {

/// Two lower-case hexadecimal digits for each byte.
[[nodiscard]] inline std::string hexadecimal(std::span<const unsigned char> bytes) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

}  // namespace Platform::Posix
