#include "Platform/Linux/Processes/LinuxTimer.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <thread>

#include "Platform/Linux/Processes/MonotonicCondition.h"
#include "Platform/Posix/PosixClock.h"

namespace Platform::Linux {

namespace {

constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

/// The state that the timer shares with its thread, which outlives it if the handler destroys the timer.
struct TimerState {
    explicit TimerState(std::function<void()> block) : handler(std::move(block)) {}

    const std::function<void()> handler;
    std::uint64_t next = kNever;
    std::uint64_t interval = kNever;
    bool cancelled = false;
    MonotonicCondition changed;
};

std::uint64_t saturatingSum(std::uint64_t a, std::uint64_t b) {
    return a > kNever - b ? kNever : a + b;
}

/// The first due time after `now`, which is not before `due`. An interval of 0 counts as the shortest one.
std::uint64_t dueAfter(std::uint64_t now, std::uint64_t due, std::uint64_t interval) {
    const std::uint64_t step = std::max<std::uint64_t>(interval, 1);
    const std::uint64_t missed = (now - due) / step;
    return saturatingSum(due, saturatingSum(step * missed, step));
}

void run(const std::shared_ptr<TimerState>& state) {
    Posix::PosixClock clock;
    MonotonicCondition::Lock lock(state->changed);
    while (!state->cancelled) {
        const std::uint64_t now = clock.now();
        if (now < state->next) {
            lock.waitUntil(state->next);
            continue;
        }
        state->next = dueAfter(now, state->next, state->interval);
        lock.unlock();
        state->handler();
        lock.lock();
    }
}

class ThreadTimer final : public Timer {
  public:
    explicit ThreadTimer(std::function<void()> handler)
        : state_(std::make_shared<TimerState>(std::move(handler))) {}

    ~ThreadTimer() override {
        cancel();
        if (thread_.get_id() == std::this_thread::get_id()) {
            thread_.detach();
        } else if (thread_.joinable()) {
            thread_.join();
        }
    }

    void schedule(std::uint64_t start, std::uint64_t interval, std::uint64_t /*leeway*/) override {
        const MonotonicCondition::Lock lock(state_->changed);
        // 0 is DISPATCH_TIME_NOW.
        state_->next = start == 0 ? Posix::PosixClock().now() : start;
        state_->interval = interval;
        state_->changed.notifyAll();
    }

    void resume() override {
        if (!thread_.joinable()) {
            thread_ = std::thread(run, state_);
        }
    }

    void cancel() override {
        const MonotonicCondition::Lock lock(state_->changed);
        state_->cancelled = true;
        state_->changed.notifyAll();
    }

  private:
    const std::shared_ptr<TimerState> state_;
    std::thread thread_;
};

}  // namespace

std::unique_ptr<Timer> makeThreadTimer(std::function<void()> handler) {
    return std::make_unique<ThreadTimer>(std::move(handler));
}

}  // namespace Platform::Linux
