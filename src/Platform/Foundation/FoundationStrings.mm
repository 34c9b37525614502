#import "Platform/Foundation/FoundationStrings.h"

#include "Base/UTF16.h"

namespace Platform::Foundation {

NSString* foundationString(std::string_view text) {
    const std::u16string units = Base::utf16FromUTF8(text);
    static_assert(sizeof(unichar) == sizeof(char16_t));
    return [NSString stringWithCharacters:reinterpret_cast<const unichar*>(units.data()) length:units.size()];
}

std::u16string units(NSString* string) {
    std::u16string units([string length], u'\0');
    [string getCharacters:reinterpret_cast<unichar*>(units.data()) range:NSMakeRange(0, units.size())];
    return units;
}

std::string text(NSString* string) {
    return Base::utf8FromUTF16WithReplacements(units(string));
}

}  // namespace Platform::Foundation
