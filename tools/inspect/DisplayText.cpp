#include "DisplayText.h"

#include <algorithm>

#include "Base/Displayable.h"
#include "Base/UTF8.h"

namespace Inspect {

std::string shown(std::string_view text) {
    return Base::displayable(text);
}

std::string shown(const std::optional<std::string>& text) {
    return text ? shown(std::string_view(*text)) : std::string(kNone);
}

std::size_t columnsOf(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return !Base::continuesUTF8(byte); }));
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
