#import "TransportQueue.h"

#include <cstdlib>
#include <thread>
#include <utility>

#include "Platform/Darwin/FoundationBridge.h"

namespace Transport {

bool isFaulty(std::string_view fault) {
    const char* const chosen = std::getenv("SELFTEST_FAULT");
    return chosen != nullptr && fault == chosen;
}

Queue::Queue() {
    std::thread([this] { run(); }).detach();
}

void Queue::async(std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    blocks_.push_back(std::move(block));
    changed_.notify_one();
}

void Queue::run() {
    for (;;) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !blocks_.empty(); });
        const std::function<void()> block = std::move(blocks_.front());
        blocks_.pop_front();
        lock.unlock();
        const Platform::Darwin::Pool pool;
        block();
    }
}

void Wait::end(bool reply, NSError* withError) {
    const std::lock_guard lock(mutex);
    if (!isOver) {
        isOver = true;
        isReply = reply;
        error = [withError retain];
        changed.notify_all();
    }
}

}  // namespace Transport
