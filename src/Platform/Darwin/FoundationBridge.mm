#include "Platform/Darwin/FoundationBridge.h"

#include "Base/UTF16.h"
#include "Base/UTF8.h"

namespace Platform::Darwin {

NSString* foundationString(std::string_view text) {
    const std::u16string units = Base::utf16FromUTF8(text);
    static_assert(sizeof(unichar) == sizeof(char16_t));
    return [NSString stringWithCharacters:reinterpret_cast<const unichar*>(units.data()) length:units.size()];
}

// Not by Foundation's own conversion: what becomes of half of a surrogate pair differs there.
std::string text(NSString* string) {
    std::u16string units([string length], u'\0');
    [string getCharacters:reinterpret_cast<unichar*>(units.data()) range:NSMakeRange(0, units.size())];
    return Base::utf8FromUTF16WithReplacements(units);
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
