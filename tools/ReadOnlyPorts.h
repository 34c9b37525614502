#pragma once

#include "Platform/SystemPorts.h"

namespace Tools {

/// Ports for programs that only look up the catalogue: the file manager names the local domain's folders as
/// they are on every Mac, without touching the disk. Using any other operation is a programming error that
/// ends the process.
[[nodiscard]] const Platform::SystemPorts& readOnlyPorts();

}  // namespace Tools
