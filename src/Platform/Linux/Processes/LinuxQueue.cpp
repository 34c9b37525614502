#include "Platform/Linux/Processes/LinuxQueue.h"

#include <algorithm>
#include <deque>
#include <thread>
#include <vector>

#include "Platform/Linux/Processes/MonotonicCondition.h"

namespace Platform::Linux {

namespace {

constexpr std::size_t kMostThreads = 64;

/// The state that the queue shares with its threads, which may outlive it for a moment.
struct QueueState {
    /// An empty function stands for a block that its submitter runs itself.
    std::deque<std::function<void()>> submitted;
    std::size_t idleThreads = 0;
    std::size_t running = 0;
    bool ending = false;
    MonotonicCondition changed;
};

/// The state whose block this thread is running.
thread_local const QueueState* currentQueue = nullptr;

void work(const std::shared_ptr<QueueState>& state) {
    currentQueue = state.get();
    MonotonicCondition::Lock lock(state->changed);
    for (;;) {
        const bool forWorkers = !state->submitted.empty() && state->submitted.front();
        if (forWorkers) {
            std::function<void()> block = std::move(state->submitted.front());
            state->submitted.pop_front();
            ++state->running;
            state->changed.notifyAll();
            lock.unlock();
            block();
            block = nullptr;
            lock.lock();
            --state->running;
            state->changed.notifyAll();
            continue;
        }
        if (state->ending && state->submitted.empty()) {
            return;
        }
        ++state->idleThreads;
        lock.wait();
        --state->idleThreads;
    }
}

class ThreadQueue : public Queue {
  public:
    explicit ThreadQueue(std::size_t mostThreads) : mostThreads_(mostThreads) {}
    ~ThreadQueue() override;

    void async(std::function<void()> block) override;

  protected:
    std::shared_ptr<QueueState> state_ = std::make_shared<QueueState>();

  private:
    const std::size_t mostThreads_;
    std::vector<std::thread> threads_;
};

class ConcurrentQueue final : public ThreadQueue {
  public:
    ConcurrentQueue() : ThreadQueue(kMostThreads) {}
    void sync(const std::function<void()>& block) override;
};

class SerialQueue final : public ThreadQueue {
  public:
    SerialQueue() : ThreadQueue(1) {}
    void sync(const std::function<void()>& block) override;
};

ThreadQueue::~ThreadQueue() {
    const bool byOwnBlock = currentQueue == state_.get();
    {
        MonotonicCondition::Lock lock(state_->changed);
        const std::size_t own = byOwnBlock ? 1 : 0;
        while (!state_->submitted.empty() || state_->running > own) {
            lock.wait();
        }
        state_->ending = true;
        state_->changed.notifyAll();
    }
    for (std::thread& thread : threads_) {
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else {
            thread.join();
        }
    }
}

void ThreadQueue::async(std::function<void()> block) {
    MonotonicCondition::Lock lock(state_->changed);
    state_->submitted.push_back(std::move(block));
    if (state_->idleThreads < state_->submitted.size() && threads_.size() < mostThreads_) {
        threads_.emplace_back(work, state_);
    }
    state_->changed.notifyAll();
}

void ConcurrentQueue::sync(const std::function<void()>& block) {
    {
        MonotonicCondition::Lock lock(state_->changed);
        // Keeps the order of starts: everything submitted before has to be started first.
        if (!state_->submitted.empty()) {
            state_->submitted.emplace_back();
            const auto* own = &state_->submitted.back();
            while (&state_->submitted.front() != own) {
                lock.wait();
            }
            state_->submitted.pop_front();
            state_->changed.notifyAll();
        }
        ++state_->running;
    }
    block();
    const MonotonicCondition::Lock lock(state_->changed);
    --state_->running;
    state_->changed.notifyAll();
}

void SerialQueue::sync(const std::function<void()>& block) {
    bool ended = false;
    async([&] {
        block();
        const MonotonicCondition::Lock lock(state_->changed);
        ended = true;
    });
    MonotonicCondition::Lock lock(state_->changed);
    // The thread tells of each block's end.
    while (!ended) {
        lock.wait();
    }
}

}  // namespace

std::unique_ptr<Queue> makeConcurrentQueue() {
    return std::make_unique<ConcurrentQueue>();
}

std::unique_ptr<Queue> makeSerialQueue() {
    return std::make_unique<SerialQueue>();
}

}  // namespace Platform::Linux
