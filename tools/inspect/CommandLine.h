#pragma once

#include <functional>
#include <string>

namespace Inspect {

/// What a command line asks for.
struct Request {
    /// Does it; empty when there is nothing to do but what follows.
    std::function<int()> run{};
    /// Help or version, for standard output.
    std::string answer{};
    /// Why the command line makes no sense, in one line; empty when it does.
    std::string misuse{};
};

/// Reads a command line according to the definitions.
[[nodiscard]] Request readCommandLine(int argc, const char* const* argv);

}  // namespace Inspect
