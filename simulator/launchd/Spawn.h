#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Simulator {

/// How a program is started.
struct SpawnRequest {
    std::string program;
    std::vector<std::string> arguments;
    std::map<std::string, std::string> environment;
    /// "/" if it is empty or cannot be entered.
    std::string workingDirectory;
    std::uint32_t uid = 0;
    /// Whether the user is in the administrators' group.
    bool administrator = false;
    /// Descriptors that become 3, 4, ...
    std::vector<int> services;
    /// Keeps standard input, output, error, session and terminal; otherwise they are /dev/null and a new
    /// session.
    bool attached = false;
    /// Looks `program` up in the environment's PATH.
    bool search = false;
};

/// Starts a program as that user. Returns its process id once it runs under its own name, or nothing with
/// `error` set to the reason (an errno).
[[nodiscard]] std::optional<pid_t> spawn(const SpawnRequest& request, int& error);

/// The environment of a user's programs on a Mac.
[[nodiscard]] std::map<std::string, std::string> userEnvironment(const std::string& name, std::uint32_t uid);

}  // namespace Simulator
