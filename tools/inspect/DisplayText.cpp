#include "DisplayText.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "Base/UTF8.h"

namespace Inspect {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// Control characters, line separators, and the marks that turn the direction of the text around them.
constexpr std::array kHidden{Range{0x00, 0x1F},     Range{0x7F, 0x9F},     Range{0x061C, 0x061C},
                             Range{0x200B, 0x200F}, Range{0x2028, 0x202E}, Range{0x2060, 0x206F},
                             Range{0xFEFF, 0xFEFF}, Range{0xFFF9, 0xFFFB}, Range{0xE0000, 0xE007F}};

bool isHidden(char32_t value) {
    return std::any_of(kHidden.begin(), kHidden.end(),
                       [value](Range range) { return value >= range.first && value <= range.last; });
}

std::string hexadecimal(char32_t value, std::size_t digits) {
    std::array<char, 8> text{};
    char* const end =
        std::to_chars(text.data(), text.data() + text.size(), static_cast<std::uint32_t>(value), 16).ptr;
    const std::string number(text.data(), end);
    return std::string(number.size() < digits ? digits - number.size() : 0, '0') + number;
}

std::string escaped(char32_t value) {
    return value < 0x80 ? "\\x" + hexadecimal(value, 2) : "\\u{" + hexadecimal(value, 4) + '}';
}

}  // namespace

std::string shown(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const Base::UTF8Character character = Base::firstUTF8Character(text);
        if (character.bytes == 0) {
            result += "\\x" + hexadecimal(static_cast<unsigned char>(text.front()), 2);
            text.remove_prefix(1);
            continue;
        }
        if (isHidden(character.value)) {
            result += escaped(character.value);
        } else if (character.value == '\\') {
            result += "\\\\";
        } else {
            result += text.substr(0, character.bytes);
        }
        text.remove_prefix(character.bytes);
    }
    return result;
}

std::string shown(const std::optional<std::string>& text) {
    return text ? shown(std::string_view(*text)) : std::string(kNone);
}

std::size_t columnsOf(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    }));
}

void appendCell(std::string& line, std::string_view cell, std::size_t width) {
    constexpr std::size_t kGap = 2;
    const std::size_t columns = columnsOf(cell);
    line += cell;
    line.append(kGap + (columns < width ? width - columns : 0), ' ');
}

void appendLine(std::string& output, std::string_view line) {
    const std::size_t last = line.find_last_not_of(' ');
    output += line.substr(0, last == std::string_view::npos ? 0 : last + 1);
    output += '\n';
}

}  // namespace Inspect
