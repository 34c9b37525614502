#pragma once

#include <memory>
#include <string>

#include "Platform/Dispatch.h"

namespace Platform::Darwin {

/// A concurrent dispatch queue whose target is the default-priority global queue.
[[nodiscard]] std::unique_ptr<Queue> makeConcurrentQueue(const std::string& label);

/// A queue with one dedicated thread, which lives as long as the queue.
[[nodiscard]] std::unique_ptr<Queue> makeSerialQueue(const std::string& label);

}  // namespace Platform::Darwin
