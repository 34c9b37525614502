#pragma once

#include <cstddef>
#include <string_view>

namespace Base {

/// The largest number of characters that `writeFileURL` touches for a path of `pathSize` bytes.
constexpr std::size_t fileURLCapacity(std::size_t pathSize) {
    return sizeof("file://") - 1 + 3 * pathSize;
}

/// Writes the textual form of the file URL of `path` (see URL::absoluteString), without a terminator, to
/// `out`, which has room for `fileURLCapacity` characters. Returns the end of what was written.
char* writeFileURL(char* out, std::string_view path);

}  // namespace Base
