#pragma once

#include <memory>

#include "Platform/Dispatch.h"

namespace Platform::Linux {

/// A new timer; see LinuxDispatch.
[[nodiscard]] std::unique_ptr<Timer> makeThreadTimer(std::function<void()> handler);

}  // namespace Platform::Linux
