#pragma once

#include <string>
#include <vector>

#include "Support/Machine.h"

namespace Simulator {

/// The command that makes `folder` the root of a Mac and starts its launchd as process 1.
[[nodiscard]] std::vector<std::string> sandboxCommand(const std::string& folder, const Session& session);

/// Status of a process that could not become that command.
inline constexpr int kNoSandbox = 125;

/// Becomes that command, or ends with the status above.
[[noreturn]] void execSandbox(const std::vector<std::string>& command);

}  // namespace Simulator
