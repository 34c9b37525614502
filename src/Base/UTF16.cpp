#include "Base/UTF16.h"

#include "Base/UTF8.h"

namespace Base {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

constexpr bool isSurrogate(char32_t value) {
    return value >= 0xD800 && value < 0xE000;
}

// Takes the first character off `units`, which are not empty. An unpaired surrogate is returned unchanged.
char32_t takeCharacter(std::u16string_view& units) {
    const char32_t high = units[0];
    const char32_t low = units.size() > 1 ? units[1] : 0;
    if (high >= 0xD800 && high < 0xDC00 && low >= 0xDC00 && low < 0xE000) {
        units.remove_prefix(2);
        return 0x10000 + ((high - 0xD800) << 10U) + (low - 0xDC00);
    }
    units.remove_prefix(1);
    return high;
}

}  // namespace

std::u16string utf16FromUTF8(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    while (!text.empty()) {
        const UTF8Character character = firstUTF8Character(text);
        if (character.bytes == 0) {
            units += kReplacement;
            text.remove_prefix(1);
            continue;
        }
        text.remove_prefix(character.bytes);
        if (character.value < 0x10000) {
            units += static_cast<char16_t>(character.value);
        } else {
            const char32_t rest = character.value - 0x10000;
            units += static_cast<char16_t>(0xD800 | rest >> 10U);
            units += static_cast<char16_t>(0xDC00 | (rest & 0x3FF));
        }
    }
    return units;
}

std::optional<std::string> utf8FromUTF16(std::u16string_view units) {
    std::string text;
    text.reserve(units.size());
    while (!units.empty()) {
        const char32_t value = takeCharacter(units);
        if (isSurrogate(value)) {
            return std::nullopt;
        }
        appendUTF8(text, value);
    }
    return text;
}

std::string utf8FromUTF16WithReplacements(std::u16string_view units) {
    std::string text;
    text.reserve(units.size());
    while (!units.empty()) {
        const char32_t value = takeCharacter(units);
        appendUTF8(text, isSurrogate(value) ? kReplacement : value);
    }
    return text;
}

}  // namespace Base
