#pragma once

#include <dispatch/dispatch.h>

#include <cstdint>
#include <limits>

#include "Platform/Darwin/DarwinClock.h"

namespace Platform::Darwin {

/// The system's form of a point in time on DarwinClock's scale; what has passed becomes the present, and what
/// lies beyond counting becomes never.
[[nodiscard]] inline dispatch_time_t dispatchTime(std::uint64_t time) {
    const std::uint64_t now = DarwinClock().now();
    if (time <= now) {
        return DISPATCH_TIME_NOW;
    }
    constexpr auto kLongest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const std::uint64_t delta = time - now;
    return delta > kLongest ? DISPATCH_TIME_FOREVER
                            : ::dispatch_time(DISPATCH_TIME_NOW, static_cast<std::int64_t>(delta));
}

}  // namespace Platform::Darwin
