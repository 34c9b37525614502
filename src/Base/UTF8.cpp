#include "Base/UTF8.h"

namespace Base {
namespace {

// The number of bytes in the character that begins with `lead`, judging by that byte alone.
std::size_t lengthAfter(char lead) {
    const auto byte = static_cast<unsigned char>(lead);
    return byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
}

}  // namespace

bool isASCII(std::string_view text) {
    unsigned seen = 0;
    for (const char c : text) {
        seen |= static_cast<unsigned char>(c);
    }
    return seen < 0x80;
}

UTF8Character firstUTF8Character(std::string_view bytes) {
    constexpr UTF8Character kNone{0, 0};
    const auto lead = static_cast<unsigned char>(bytes[0]);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lengthAfter(bytes[0]);
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) {
        return kNone;
    }
    char32_t value = lead & (0x7FU >> length);
    for (const char next : bytes.substr(1, length - 1)) {
        if (!continuesUTF8(next)) {
            return kNone;
        }
        value = (value << 6U) | (static_cast<unsigned char>(next) & 0x3FU);
    }
    const bool overlong = (length == 3 && value < 0x800) || (length == 4 && value < 0x10000);
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    return overlong || surrogate || value > 0x10FFFF ? kNone : UTF8Character{value, length};
}

bool isValidUTF8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t length = firstUTF8Character(bytes).bytes;
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
    return true;
}

void appendUTF8(std::string& text, char32_t value) {
    const auto continuation = [value](unsigned shift) {
        return static_cast<char>(0x80U | (value >> shift & 0x3FU));
    };
    if (value < 0x80) {
        text += static_cast<char>(value);
    } else if (value < 0x800) {
        text += {static_cast<char>(0xC0U | value >> 6U), continuation(0)};
    } else if (value < 0x10000) {
        text += {static_cast<char>(0xE0U | value >> 12U), continuation(6), continuation(0)};
    } else {
        text += {static_cast<char>(0xF0U | value >> 18U), continuation(12), continuation(6), continuation(0)};
    }
}

std::string_view startOfUTF8(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) {
        return text;
    }
    std::size_t length = limit;
    while (length > 0 && limit - length < kLongestUTF8 && continuesUTF8(text[length])) {
        --length;
    }
    return text.substr(0, length);
}

std::string_view withoutCutCharacter(std::string_view text) {
    for (std::size_t length = 1; length < kLongestUTF8 && length <= text.size(); ++length) {
        const std::size_t at = text.size() - length;
        if (!continuesUTF8(text[at])) {
            return lengthAfter(text[at]) > length ? text.substr(0, at) : text;
        }
    }
    return text;
}

}  // namespace Base
