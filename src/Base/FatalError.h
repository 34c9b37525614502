#pragma once

#include <string_view>

namespace Base {

/// Ends the process because of a programming error. Always on, in every build type.
///
/// Writes "Fatal error: " and `text`, escaped to one line (see Displayable.h), to standard error, passes the
/// same line to the handler of last words, then calls abort(): the process ends with SIGABRT and no
/// destructor runs. May be called on any thread.
[[noreturn]] void fatalError(std::string_view text);

/// Delivers the last line of a process to where it will be found.
using LastWords = void (*)(std::string_view line);

/// Sets the handler; null, the initial value, for none. Any thread. It is called at most once: a fatal error
/// in the handler itself, or meanwhile on another thread, ends the process without its words.
void setLastWords(LastWords handler);

}  // namespace Base
