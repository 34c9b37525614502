#pragma once

#include <string>

#include "Check.h"

namespace Selftest {

/// What the check called `name` finds in a process of its own (the program at `path`, told "--only NAME"), so
/// that one that crashes or waits without an end costs its own answer only. No answer within `seconds` is a
/// failure, and so is a process that ends without one; the reason then quotes its last words.
[[nodiscard]] Outcome outcomeOfProcess(const std::string& path, std::string_view name, int seconds);

/// The command line, on the program at `path`: see the head of main.mm. Returns the exit status.
[[nodiscard]] int runSelftest(const std::string& path, int argc, char** argv, const Checks& checks);

}  // namespace Selftest
