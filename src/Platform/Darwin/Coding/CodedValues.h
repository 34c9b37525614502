#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>

#include "Base/URL.h"

/// For the Objective-C++ files of this room: values as an archive or a message holds them. Unlike the
/// conversions for paths and lines of log, these repair nothing: malformed values are refused, in the same
/// cases as in the program's own archives.
namespace Platform::Darwin {

/// The UTF-8 form of what should be a string, NUL characters included. Nothing for an object of another
/// class, for nil, and for half of a surrogate pair.
[[nodiscard]] std::optional<std::string> stringValue(id value);

/// The file URL that `value` is. Its own text and those of the URLs that it stands on are read as
/// Base::URL::parse does: nothing for nil, an object of another class, a query, a fragment, another host, a
/// component ".." and so on.
[[nodiscard]] std::optional<Base::URL> urlValue(id value);

/// The truth of a boolean or of the whole numbers 0 and 1; nothing for anything else.
[[nodiscard]] std::optional<bool> boolValue(id value);

/// The URL whose text is `url`'s own (no trailing slash), autoreleased.
[[nodiscard]] NSURL* codedURL(const Base::URL& url);

}  // namespace Platform::Darwin
