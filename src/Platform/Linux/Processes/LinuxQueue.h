#pragma once

#include <memory>

#include "Platform/Dispatch.h"

namespace Platform::Linux {

/// New queues; see LinuxDispatch.
[[nodiscard]] std::unique_ptr<Queue> makeConcurrentQueue();
[[nodiscard]] std::unique_ptr<Queue> makeSerialQueue();

}  // namespace Platform::Linux
