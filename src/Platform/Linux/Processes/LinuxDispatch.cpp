#include "Platform/Linux/Processes/LinuxDispatch.h"

#include <cerrno>
#include <ctime>

#include "Base/FatalError.h"
#include "Platform/Linux/Processes/LinuxQueue.h"
#include "Platform/Linux/Processes/LinuxTimer.h"
#include "Platform/Linux/Processes/MonotonicCondition.h"

namespace Platform::Linux {

namespace {

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

void require(int result) {
    if (result != 0) {
        Base::fatalError("A mutex or condition could not be used.");
    }
}

class CountingSemaphore final : public Semaphore {
  public:
    explicit CountingSemaphore(std::int64_t value) : value_(value) {}

    void signal() override {
        const MonotonicCondition::Lock lock(condition_);
        ++value_;
        // Still under the lock: the waiter may destroy the semaphore as soon as it has the count.
        condition_.notifyOne();
    }

    bool wait(std::uint64_t deadline) override {
        MonotonicCondition::Lock lock(condition_);
        while (value_ <= 0) {
            if (!lock.waitUntil(deadline) && value_ <= 0) {
                return false;
            }
        }
        --value_;
        return true;
    }

  private:
    MonotonicCondition condition_;
    std::int64_t value_;
};

}  // namespace

MonotonicCondition::MonotonicCondition() {
    // Whoever lets go of what they do not hold is told so.
    pthread_mutexattr_t checks;
    require(::pthread_mutexattr_init(&checks));
    require(::pthread_mutexattr_settype(&checks, PTHREAD_MUTEX_ERRORCHECK));
    require(::pthread_mutex_init(&mutex_, &checks));
    ::pthread_mutexattr_destroy(&checks);
    pthread_condattr_t attributes;
    require(::pthread_condattr_init(&attributes));
    require(::pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC));
    require(::pthread_cond_init(&condition_, &attributes));
    ::pthread_condattr_destroy(&attributes);
}

MonotonicCondition::~MonotonicCondition() {
    ::pthread_cond_destroy(&condition_);
    ::pthread_mutex_destroy(&mutex_);
}

void MonotonicCondition::notifyOne() {
    ::pthread_cond_signal(&condition_);
}

void MonotonicCondition::notifyAll() {
    ::pthread_cond_broadcast(&condition_);
}

MonotonicCondition::Lock::Lock(MonotonicCondition& condition) : condition_(condition) {
    lock();
}

MonotonicCondition::Lock::~Lock() {
    if (held_) {
        unlock();
    }
}

void MonotonicCondition::Lock::lock() {
    require(::pthread_mutex_lock(&condition_.mutex_));
    held_ = true;
}

void MonotonicCondition::Lock::unlock() {
    held_ = false;
    require(::pthread_mutex_unlock(&condition_.mutex_));
}

void MonotonicCondition::Lock::wait() {
    require(::pthread_cond_wait(&condition_.condition_, &condition_.mutex_));
}

bool MonotonicCondition::Lock::waitUntil(std::uint64_t deadline) {
    const timespec time{static_cast<time_t>(deadline / kNanosecondsPerSecond),
                        static_cast<long>(deadline % kNanosecondsPerSecond)};
    const int result = ::pthread_cond_timedwait(&condition_.condition_, &condition_.mutex_, &time);
    if (result != ETIMEDOUT) {
        require(result);
    }
    return result == 0;
}

std::unique_ptr<Semaphore> LinuxDispatch::makeSemaphore(std::int64_t value) {
    return std::make_unique<CountingSemaphore>(value);
}

std::unique_ptr<Queue> LinuxDispatch::makeConcurrentQueue(const std::string& /*label*/) {
    return Platform::Linux::makeConcurrentQueue();
}

std::unique_ptr<Queue> LinuxDispatch::makeSerialQueue(const std::string& /*label*/) {
    return Platform::Linux::makeSerialQueue();
}

std::unique_ptr<Timer> LinuxDispatch::makeTimer(std::function<void()> handler) {
    return makeThreadTimer(std::move(handler));
}

}  // namespace Platform::Linux
