#include "Base/Displayable.h"

#include <algorithm>
#include <array>

#include "Base/UTF8.h"

namespace Base {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// Control characters, separators, and Unicode's invisible format and filler characters. Variation selectors
// are left out: they choose between visible forms and occur in Japanese names.
constexpr std::array kHidden{
    Range{0x00, 0x1F},       Range{0x7F, 0x9F},       Range{0xAD, 0xAD},      Range{0x034F, 0x034F},
    Range{0x061C, 0x061C},   Range{0x115F, 0x1160},   Range{0x17B4, 0x17B5},  Range{0x180E, 0x180E},
    Range{0x200B, 0x200F},   Range{0x2028, 0x202E},   Range{0x2060, 0x206F},  Range{0x3164, 0x3164},
    Range{0xFEFF, 0xFEFF},   Range{0xFFA0, 0xFFA0},   Range{0xFFF0, 0xFFFB},  Range{0x1BCA0, 0x1BCA3},
    Range{0x1D173, 0x1D17A}, Range{0xE0000, 0xE00FF}, Range{0xE01F0, 0xE0FFF}};

bool isHidden(char32_t value) {
    return std::any_of(kHidden.begin(), kHidden.end(),
                       [value](Range range) { return value >= range.first && value <= range.last; });
}

bool isHexadecimal(char digit) {
    return (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f') || (digit >= 'A' && digit <= 'F');
}

/// Whether `text` begins like an escaped byte.
bool looksEscaped(std::string_view text) {
    return text.size() >= 4 && text[0] == '\\' && text[1] == 'x' && isHexadecimal(text[2]) &&
           isHexadecimal(text[3]);
}

void appendEscaped(std::string& result, std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        result += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 15U]};
    }
}

/// How many characters at the start are printable ASCII and cannot begin an escaped byte: most texts are
/// nothing else.
std::size_t plainLength(std::string_view text) {
    const auto end = std::ranges::find_if_not(text, [](char c) { return c >= ' ' && c <= '~' && c != '\\'; });
    return static_cast<std::size_t>(end - text.begin());
}

std::string escaped(std::string_view text, std::string_view kept) {
    std::string result;
    result.reserve(text.size());
    while (true) {
        const std::size_t plain = plainLength(text);
        result += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            return result;
        }
        const UTF8Character character = firstUTF8Character(text);
        const bool isValid = character.bytes != 0;
        const std::string_view bytes = text.substr(0, isValid ? character.bytes : 1);
        const bool isKept = kept.find(text.front()) != std::string_view::npos;
        if (!isKept && (!isValid || isHidden(character.value) || looksEscaped(text))) {
            appendEscaped(result, bytes);
        } else {
            result += bytes;
        }
        text.remove_prefix(bytes.size());
    }
}

}  // namespace

std::string displayable(std::string_view text) {
    return escaped(text, "");
}

std::string displayableLines(std::string_view text) {
    return escaped(text, "\n\t");
}

}  // namespace Base
