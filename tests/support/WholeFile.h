#pragma once

#include <string>

namespace TestSupport {

/// The bytes of a file; "" if it cannot be read. Streams copy them in blocks: byte by byte, a Mac's programs
/// take seconds in tests, which are not optimised.
[[nodiscard]] std::string contentsOf(const std::string& path);

}  // namespace TestSupport
