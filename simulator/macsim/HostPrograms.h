#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Simulator {

/// The folder of macsim's own executable.
[[nodiscard]] std::string ownFolder();

/// The path of a bundle that was built beside macsim.
[[nodiscard]] std::string ownBundle(const std::string& name);

/// The folder of the programs that macsim puts into a Mac. Throws a Refusal if they do not exist.
[[nodiscard]] std::string simulatorPrograms();

/// Runs a program of the host, found in PATH, to its end with its output where macsim's goes. Returns its
/// wait status; nothing if it cannot be started.
[[nodiscard]] std::optional<int> runProgram(const std::vector<std::string>& command);

}  // namespace Simulator
