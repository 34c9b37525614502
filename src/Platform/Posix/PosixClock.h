#pragma once

#include "Platform/Clock.h"

namespace Platform::Posix {

/// CLOCK_MONOTONIC. Calls may come from any thread.
class PosixClock final : public Clock {
  public:
    [[nodiscard]] std::uint64_t now() override;
    void sleep(std::uint32_t seconds) override;
};

}  // namespace Platform::Posix
