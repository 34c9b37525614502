#pragma once

#import <Foundation/Foundation.h>

#include <string>

namespace Uninstall_Sentrel {

/// The text, autoreleased; empty if it is not UTF-8.
inline NSString* toNSString(const std::string& text) {
    NSString* converted = [[[NSString alloc] initWithBytes:text.data()
                                                    length:text.size()
                                                  encoding:NSUTF8StringEncoding] autorelease];
    return converted == nil ? @"" : converted;
}

/// The text in UTF-8; empty for nil.
inline std::string toString(NSString* text) {
    const char* bytes = [text UTF8String];
    return bytes == nullptr ? std::string() : std::string(bytes);
}

}  // namespace Uninstall_Sentrel
