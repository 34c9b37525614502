#pragma once

#include "Platform/Dispatch.h"

namespace Platform::Linux {

/// The few parts of Grand Central Dispatch that the program uses, on plain threads.
///
/// A concurrent queue starts a thread if a block finds none idle, up to 64 per queue; the global queue that
/// it targets has no threads of its own here; a block handed to `sync` runs on the caller's thread. A serial
/// queue has one thread, which also runs a block handed to `sync`. A queue may be destroyed by its last
/// block. A timer has one thread from its first resume on; firings that come due while the handler runs are
/// merged into one afterwards; a timer may be destroyed by its own handler. Labels are not kept.
class LinuxDispatch final : public Dispatch {
  public:
    [[nodiscard]] std::unique_ptr<Semaphore> makeSemaphore(std::int64_t value) override;
    [[nodiscard]] std::unique_ptr<Queue> makeConcurrentQueue(const std::string& label) override;
    [[nodiscard]] std::unique_ptr<Queue> makeSerialQueue(const std::string& label) override;
    [[nodiscard]] std::unique_ptr<Timer> makeTimer(std::function<void()> handler) override;
};

}  // namespace Platform::Linux
