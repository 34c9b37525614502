#include "Platform/Darwin/FoundationBridge.h"

#include <vector>

#include "Base/Text.h"
#include "Base/UTF8.h"

namespace Platform::Darwin {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

constexpr bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

void append(std::string& text, char32_t value) {
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

}  // namespace

NSString* foundationString(std::string_view text) {
    const std::u16string units = Base::utf16FromUTF8(text);
    static_assert(sizeof(unichar) == sizeof(char16_t));
    return [NSString stringWithCharacters:reinterpret_cast<const unichar*>(units.data()) length:units.size()];
}

// Not by Foundation's own conversion: what becomes of half of a surrogate pair differs there.
std::string text(NSString* string) {
    std::vector<unichar> units([string length]);
    [string getCharacters:units.data() range:NSMakeRange(0, units.size())];
    std::string result;
    result.reserve(units.size());
    for (std::size_t index = 0; index < units.size(); ++index) {
        const char32_t unit = units[index];
        const char32_t next = index + 1 < units.size() ? units[index + 1] : 0;
        if (isHighSurrogate(unit) && isLowSurrogate(next)) {
            append(result, 0x10000 + ((unit - 0xD800) << 10U) + (next - 0xDC00));
            ++index;
        } else {
            append(result, isHighSurrogate(unit) || isLowSurrogate(unit) ? kReplacement : unit);
        }
    }
    return result;
}

NSString* foundationPath(const std::string& path) {
    const bool possible = path.find('\0') == std::string::npos && Base::isValidUTF8(path);
    return possible ? foundationString(path) : nil;
}

NSURL* foundationURL(const Base::URL& url, bool isFolder) {
    NSString* const path = foundationPath(url.path());
    return path != nil ? [NSURL fileURLWithPath:path isDirectory:isFolder ? YES : NO] : nil;
}

std::optional<Base::URL> fileURL(NSURL* url) {
    NSString* const path = [url path];
    return path != nil ? std::optional(Base::URL::fileURL(text(path))) : std::nullopt;
}

}  // namespace Platform::Darwin
