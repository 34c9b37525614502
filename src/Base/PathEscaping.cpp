#include "Base/PathEscaping.h"

#include <array>
#include <cstddef>

namespace Base {
namespace {

// The characters that a path holds literally besides letters and digits. ';' is legal in a URL's path but
// escaped anyway, as in the system's own file URLs.
constexpr std::string_view kLiteralMarks = "-._~!$&'()*+,=:@/";

constexpr bool isLiteral(unsigned char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           kLiteralMarks.find(static_cast<char>(byte)) != std::string_view::npos;
}

constexpr std::array<bool, 256> kLiteral = [] {
    std::array<bool, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        table[byte] = isLiteral(static_cast<unsigned char>(byte));
    }
    return table;
}();

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return (lower >= 'a' && lower <= 'f') ? lower - 'a' + 10 : -1;
}

// The byte that the escape at the start of `text` encodes; nothing if it is broken or encodes NUL.
std::optional<char> escapedByte(std::string_view text) {
    const int high = text.size() >= 3 ? hexValue(text[1]) : -1;
    const int low = high >= 0 ? hexValue(text[2]) : -1;
    if (low < 0 || (high | low) == 0) {
        return std::nullopt;
    }
    return static_cast<char>(high << 4 | low);
}

}  // namespace

void appendEscapedPath(std::string& text, std::string_view path) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::size_t literal = 0;  // start of the literal bytes up to `at`
    for (std::size_t at = 0; at < path.size(); ++at) {
        const auto byte = static_cast<unsigned char>(path[at]);
        if (!kLiteral[byte]) {
            text.append(path, literal, at - literal);
            text += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
            literal = at + 1;
        }
    }
    text.append(path, literal);
}

std::optional<std::string> unescapedPath(std::string_view text) {
    std::string path(text.size(), '\0');  // it never gets longer
    std::size_t length = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        char c = text[at];
        if (c == '?' || c == '#' || c == '\0') {
            return std::nullopt;
        }
        if (c == '%') {
            const auto byte = escapedByte(text.substr(at));
            if (!byte) {
                return std::nullopt;
            }
            c = *byte;
            at += 2;
        }
        path[length++] = c;
    }
    path.resize(length);
    return path;
}

}  // namespace Base
