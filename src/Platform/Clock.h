#pragma once

#include <cstdint>

namespace Platform {

/// Monotonic time in nanoseconds since an arbitrary origin, as dispatch_time(DISPATCH_TIME_NOW, ...) counts
/// it.
class Clock {
  public:
    virtual ~Clock() = default;

    [[nodiscard]] virtual std::uint64_t now() = 0;
    /// dispatch_time(DISPATCH_TIME_NOW, delta): the present plus `delta` nanoseconds.
    [[nodiscard]] std::uint64_t time(std::int64_t delta) { return now() + static_cast<std::uint64_t>(delta); }
    /// Blocks the calling thread for `seconds`, even if signals arrive.
    virtual void sleep(std::uint32_t seconds) = 0;
};

}  // namespace Platform
