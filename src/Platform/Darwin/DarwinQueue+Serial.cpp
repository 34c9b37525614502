#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include "Platform/Darwin/DarwinQueue.h"

namespace Platform::Darwin {

namespace {

/// What the queue shares with its thread, which outlives it when one of its blocks destroys it.
struct SerialState {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> submitted;
    bool ending = false;
};

void work(const std::shared_ptr<SerialState>& state) {
    std::unique_lock lock(state->mutex);
    for (;;) {
        state->changed.wait(lock, [&] { return state->ending || !state->submitted.empty(); });
        if (state->submitted.empty()) {
            return;
        }
        std::function<void()> block = std::move(state->submitted.front());
        state->submitted.pop_front();
        lock.unlock();
        block();
        block = nullptr;
        lock.lock();
    }
}

class SerialQueue final : public Queue {
  public:
    SerialQueue() : thread_(work, state_) {}
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;
    ~SerialQueue() override {
        {
            const std::lock_guard lock(state_->mutex);
            state_->ending = true;
            state_->changed.notify_all();
        }
        if (thread_.get_id() == std::this_thread::get_id()) {
            thread_.detach();
        } else {
            thread_.join();
        }
    }

    void async(std::function<void()> block) override {
        const std::lock_guard lock(state_->mutex);
        state_->submitted.push_back(std::move(block));
        state_->changed.notify_all();
    }

    void sync(const std::function<void()>& block) override {
        bool ended = false;
        async([&] {
            block();
            const std::lock_guard lock(state_->mutex);
            ended = true;
            state_->changed.notify_all();
        });
        std::unique_lock lock(state_->mutex);
        state_->changed.wait(lock, [&] { return ended; });
    }

  private:
    const std::shared_ptr<SerialState> state_ = std::make_shared<SerialState>();
    std::thread thread_;
};

}  // namespace

std::unique_ptr<Queue> makeSerialQueue(const std::string& /*label*/) {
    return std::make_unique<SerialQueue>();
}

}  // namespace Platform::Darwin
