#pragma once

#include "Platform/Clock.h"

namespace Platform::Darwin {

/// The time since the Mac was started without the time that it slept: the clock of dispatch_time, which
/// CLOCK_MONOTONIC is not here (it goes on during sleep). Calls may come from any thread.
class DarwinClock final : public Clock {
  public:
    [[nodiscard]] std::uint64_t now() override;
    void sleep(std::uint32_t seconds) override;
};

}  // namespace Platform::Darwin
