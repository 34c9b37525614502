#pragma once

#include <optional>
#include <string>

#include <sys/types.h>

namespace Simulator {

/// X.app for X.app/Contents/MacOS/x; empty for a program outside an application.
[[nodiscard]] std::string bundleOfExecutable(const std::string& executable);

/// Stands for a code signature: the bundle identifier of a running application whose executable, folders and
/// Info.plist belong to root and can be written by nobody else. Returns nothing for any other process.
[[nodiscard]] std::optional<std::string> codeIdentifier(pid_t pid);

}  // namespace Simulator
