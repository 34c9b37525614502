#include "Platform/Darwin/DarwinTimer.h"

#include <dispatch/dispatch.h>

#include <utility>

#include "Platform/Darwin/DispatchTime.h"

namespace Platform::Darwin {

namespace {

/// What the timer shares with its source, which outlives it when the handler destroys the timer.
struct TimerState {
    explicit TimerState(std::function<void()> block)
        : handler(std::move(block)), cancelled(::dispatch_semaphore_create(0)) {}
    TimerState(const TimerState&) = delete;
    TimerState& operator=(const TimerState&) = delete;
    ~TimerState() { ::dispatch_release(cancelled); }

    std::function<void()> handler;
    /// Signalled once, when no handler runs any more.
    const dispatch_semaphore_t cancelled;
};

/// The source's context: its own share of the state.
using Context = std::shared_ptr<TimerState>;

/// The state whose handler this thread is running or taking apart.
thread_local const TimerState* currentTimer = nullptr;

void runHandler(void* context) {
    const TimerState& state = **static_cast<Context*>(context);
    const TimerState* const before = std::exchange(currentTimer, &state);
    state.handler();
    currentTimer = before;
}

/// Called once, after the last run of the handler has ended. What the handler holds goes here and not with
/// the source, which may go later than the timer. It may be the timer itself.
void endTimer(void* context) {
    TimerState& state = **static_cast<Context*>(context);
    const TimerState* const before = std::exchange(currentTimer, &state);
    state.handler = nullptr;
    currentTimer = before;
    ::dispatch_semaphore_signal(state.cancelled);
}

void releaseContext(void* context) {
    delete static_cast<Context*>(context);
}

class SourceTimer final : public Timer {
  public:
    explicit SourceTimer(std::function<void()> handler)
        : state_(std::make_shared<TimerState>(std::move(handler))),
          source_(::dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0,
                                           ::dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0))) {
        ::dispatch_set_context(source_, new Context(state_));
        ::dispatch_set_finalizer_f(source_, releaseContext);
        ::dispatch_source_set_event_handler_f(source_, runHandler);
        ::dispatch_source_set_cancel_handler_f(source_, endTimer);
    }
    SourceTimer(const SourceTimer&) = delete;
    SourceTimer& operator=(const SourceTimer&) = delete;
    ~SourceTimer() override {
        cancel();
        // A suspended source runs no cancel handler and must not be released. A cancelled one fires no more.
        resume();
        if (currentTimer != state_.get()) {
            ::dispatch_semaphore_wait(state_->cancelled, DISPATCH_TIME_FOREVER);
        }
        ::dispatch_release(source_);
    }

    void schedule(std::uint64_t start, std::uint64_t interval, std::uint64_t leeway) override {
        const dispatch_time_t first = start == kTimeNow ? DISPATCH_TIME_NOW : dispatchTime(start);
        ::dispatch_source_set_timer(source_, first, interval, leeway);
    }

    void resume() override {
        // One resumption too many ends the process.
        if (!std::exchange(resumed_, true)) {
            ::dispatch_resume(source_);
        }
    }

    void cancel() override { ::dispatch_source_cancel(source_); }

  private:
    const std::shared_ptr<TimerState> state_;
    const dispatch_source_t source_;
    bool resumed_ = false;
};

}  // namespace

std::unique_ptr<Timer> makeSourceTimer(std::function<void()> handler) {
    return std::make_unique<SourceTimer>(std::move(handler));
}

}  // namespace Platform::Darwin
