#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "support/Patience.h"

namespace TestSupport {

/// How a program ended and what it wrote.
struct ProgramResult {
    /// Exit status, or 128 and the number of the signal.
    int status = -1;
    std::string out;
    std::string err;
};

/// Runs a program found in PATH, with empty standard input, to its end. One that takes longer than `limit`
/// is ended.
[[nodiscard]] ProgramResult runProgram(const std::vector<std::string>& command,
                                       std::chrono::seconds limit = kPatience);

}  // namespace TestSupport
