#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Clock.h"
#include "Platform/Dispatch.h"
#include "support/Call.h"

namespace TestSupport {

class FakeClock final : public Platform::Clock {
  public:
    explicit FakeClock(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::uint64_t now() override { return present; }
    void sleep(std::uint32_t seconds) override { calls_.push_back({"sleep", seconds}); }

    std::uint64_t present = 1'000'000'000'000;

  private:
    CallList& calls_;
};

/// Queues run their blocks at once on the caller's thread; a wait without a count is a time-out.
class FakeDispatch final : public Platform::Dispatch {
  public:
    explicit FakeDispatch(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::unique_ptr<Platform::Semaphore> makeSemaphore(std::int64_t value) override;
    [[nodiscard]] std::unique_ptr<Platform::Queue> makeConcurrentQueue(const std::string& label) override;
    [[nodiscard]] std::unique_ptr<Platform::Queue> makeSerialQueue(const std::string& label) override;
    [[nodiscard]] std::unique_ptr<Platform::Timer> makeTimer(std::function<void()> handler) override;

    /// Called in each wait, before it is decided.
    std::function<void()> onWait;
    /// Called in each signal, before it counts.
    std::function<void()> onSignal;
    /// The handlers of the timers that were made.
    std::vector<std::function<void()>> timerHandlers;
    /// Queues keep their blocks until `runKept`.
    bool keepsBlocks = false;
    std::deque<std::function<void()>> kept;
    void runKept();

  private:
    CallList& calls_;
};

}  // namespace TestSupport
