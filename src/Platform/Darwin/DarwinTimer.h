#pragma once

#include <functional>
#include <memory>

#include "Platform/Dispatch.h"

namespace Platform::Darwin {

/// A timer source on the default-priority global queue.
[[nodiscard]] std::unique_ptr<Timer> makeSourceTimer(std::function<void()> handler);

}  // namespace Platform::Darwin
