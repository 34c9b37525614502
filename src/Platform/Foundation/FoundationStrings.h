#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

/// Between Foundation's strings and the program's, for Objective-C++ files. Not by Foundation's own
/// conversions: what becomes of invalid UTF-8 and of half of a surrogate pair differs there.
namespace Platform::Foundation {

/// The string of a UTF-8 text, autoreleased, never nil. Each invalid byte becomes U+FFFD.
[[nodiscard]] NSString* foundationString(std::string_view text);

/// The UTF-16 units of a string; none for nil.
[[nodiscard]] std::u16string units(NSString* string);

/// Its UTF-8 form, NUL characters included; half of a surrogate pair, which has none, becomes a replacement
/// character. Nil becomes the empty text.
[[nodiscard]] std::string text(NSString* string);

}  // namespace Platform::Foundation
