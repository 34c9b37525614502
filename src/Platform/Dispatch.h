#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Platform {

/// DISPATCH_TIME_NOW: the present, as a timer's start.
inline constexpr std::uint64_t kTimeNow = 0;

/// A counting semaphore whose wait has a deadline (dispatch_semaphore).
class Semaphore {
  public:
    virtual ~Semaphore() = default;

    /// May be called on any thread.
    virtual void signal() = 0;
    /// Takes one count; waits for it until `deadline` on Clock's scale. True if a count was taken.
    [[nodiscard]] virtual bool wait(std::uint64_t deadline) = 0;
};

/// A queue of blocks. On a concurrent one blocks start in order of submission and may overlap; on a serial
/// one each starts when the one before it has ended, all on one thread.
class Queue {
  public:
    /// Waits for the blocks that were submitted.
    virtual ~Queue() = default;

    /// Hands `block` over and returns at once; it runs on another thread.
    virtual void async(std::function<void()> block) = 0;
    /// Runs `block` as a plain submission (not a barrier) and returns when it has ended.
    virtual void sync(const std::function<void()>& block) = 0;
};

/// A timer source, made suspended.
class Timer {
  public:
    /// Cancels the timer. No handler runs after the destructor has returned.
    virtual ~Timer() = default;

    /// `start` and `interval` are passed on unchanged, in nanoseconds (dispatch_source_set_timer).
    virtual void schedule(std::uint64_t start, std::uint64_t interval, std::uint64_t leeway) = 0;
    /// A second call has no effect.
    virtual void resume() = 0;
    virtual void cancel() = 0;
};

/// Grand Central Dispatch, as far as the program uses it.
class Dispatch {
  public:
    virtual ~Dispatch() = default;

    /// With `value` counts to begin with, which is not negative (dispatch_semaphore_create(3)).
    [[nodiscard]] virtual std::unique_ptr<Semaphore> makeSemaphore(std::int64_t value) = 0;
    /// A concurrent queue with the default-priority global queue as its target.
    [[nodiscard]] virtual std::unique_ptr<Queue> makeConcurrentQueue(const std::string& label) = 0;
    [[nodiscard]] virtual std::unique_ptr<Queue> makeSerialQueue(const std::string& label) = 0;
    /// A timer whose `handler` runs on the default-priority global queue.
    [[nodiscard]] virtual std::unique_ptr<Timer> makeTimer(std::function<void()> handler) = 0;
};

}  // namespace Platform
