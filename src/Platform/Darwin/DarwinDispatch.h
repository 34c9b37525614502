#pragma once

#include "Platform/Dispatch.h"

namespace Platform::Darwin {

/// Grand Central Dispatch. Deadlines and a timer's start are on DarwinClock's scale and become the system's
/// own at the moment of the call. A serial queue is one dedicated thread: the system's serial queues run
/// their blocks one after another, but not all on one thread.
class DarwinDispatch final : public Dispatch {
  public:
    [[nodiscard]] std::unique_ptr<Semaphore> makeSemaphore(std::int64_t value) override;
    [[nodiscard]] std::unique_ptr<Queue> makeConcurrentQueue(const std::string& label) override;
    [[nodiscard]] std::unique_ptr<Queue> makeSerialQueue(const std::string& label) override;
    [[nodiscard]] std::unique_ptr<Timer> makeTimer(std::function<void()> handler) override;
};

}  // namespace Platform::Darwin
