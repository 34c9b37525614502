#pragma once

#include <string>
#include <vector>

#include "Support/Machine.h"

namespace Simulator {

/// The command that makes `folder` the root of a Mac and starts its launchd as process 1.
[[nodiscard]] std::vector<std::string> sandboxCommand(const std::string& folder, const Session& session);

/// Becomes that command.
[[noreturn]] void execSandbox(const std::vector<std::string>& command);

}  // namespace Simulator
