#pragma once

#include <functional>
#include <string>

namespace Inspect {

/// The meaning of a command line.
struct Request {
    /// Carries it out; empty if only the members below apply.
    std::function<int()> run{};
    /// Help or version, for standard output.
    std::string answer{};
    /// Why the command line is invalid, in one line; empty if it is valid.
    std::string misuse{};
};

/// Reads a command line according to the definitions.
[[nodiscard]] Request readCommandLine(int argc, const char* const* argv);

}  // namespace Inspect
