// The concurrent queue. (The serial one is in DarwinQueue+Serial.cpp.)
#include "Platform/Darwin/DarwinQueue.h"

#include <dispatch/dispatch.h>

#include <condition_variable>
#include <mutex>
#include <utility>

namespace Platform::Darwin {

namespace {

/// What the queue shares with its blocks, the last of which may outlive it.
struct QueueState {
    std::mutex mutex;
    std::condition_variable changed;
    std::size_t unfinished = 0;
};

/// The state whose block this thread is running.
thread_local const QueueState* currentQueue = nullptr;

struct Submission {
    std::shared_ptr<QueueState> state;
    std::function<void()> block;
};

void runSubmission(void* context) {
    const std::unique_ptr<Submission> submission(static_cast<Submission*>(context));
    QueueState& state = *submission->state;
    const QueueState* const before = std::exchange(currentQueue, &state);
    submission->block();
    // What the block holds goes while it still counts as running: it may hold the queue itself.
    submission->block = nullptr;
    currentQueue = before;
    const std::lock_guard lock(state.mutex);
    --state.unfinished;
    state.changed.notify_all();
}

void runBlock(void* context) {
    (*static_cast<const std::function<void()>*>(context))();
}

class ConcurrentQueue final : public Queue {
  public:
    explicit ConcurrentQueue(const std::string& label)
        : queue_(::dispatch_queue_create_with_target(
              label.c_str(), DISPATCH_QUEUE_CONCURRENT,
              ::dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0))) {}
    ConcurrentQueue(const ConcurrentQueue&) = delete;
    ConcurrentQueue& operator=(const ConcurrentQueue&) = delete;
    ~ConcurrentQueue() override {
        // One of its own blocks may destroy it and does not wait for itself.
        const std::size_t own = currentQueue == state_.get() ? 1 : 0;
        {
            std::unique_lock lock(state_->mutex);
            state_->changed.wait(lock, [&] { return state_->unfinished <= own; });
        }
        ::dispatch_release(queue_);
    }

    void async(std::function<void()> block) override {
        {
            const std::lock_guard lock(state_->mutex);
            ++state_->unfinished;
        }
        auto submission = std::make_unique<Submission>(Submission{state_, std::move(block)});
        ::dispatch_async_f(queue_, submission.release(), runSubmission);
    }

    void sync(const std::function<void()>& block) override {
        ::dispatch_sync_f(queue_, const_cast<std::function<void()>*>(&block), runBlock);
    }

  private:
    const dispatch_queue_t queue_;
    const std::shared_ptr<QueueState> state_ = std::make_shared<QueueState>();
};

}  // namespace

std::unique_ptr<Queue> makeConcurrentQueue(const std::string& label) {
    return std::make_unique<ConcurrentQueue>(label);
}

}  // namespace Platform::Darwin
