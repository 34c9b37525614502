#pragma once

#include <string_view>

namespace Base {

/// Ends the process because of a programming error. Always on, in every build type.
///
/// Writes "Fatal error: " followed by `text` and a line feed to standard error, then calls abort(): the
/// process ends with SIGABRT and no destructor runs. Nothing goes to the system log. May be called on any
/// thread.
[[noreturn]] void fatalError(std::string_view text);

}  // namespace Base
