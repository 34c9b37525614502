#include "Platform/Darwin/DarwinDispatch.h"

#include "Platform/Darwin/DarwinQueue.h"
#include "Platform/Darwin/DarwinTimer.h"
#include "Platform/Darwin/DispatchTime.h"

namespace Platform::Darwin {

namespace {

class CountingSemaphore final : public Semaphore {
  public:
    /// Begins with no count and adds them: the system ends a process that releases a semaphore while it has
    /// less than it was made with.
    explicit CountingSemaphore(std::int64_t value) : semaphore_(::dispatch_semaphore_create(0)) {
        for (std::int64_t count = 0; count < value; ++count) {
            signal();
        }
    }
    CountingSemaphore(const CountingSemaphore&) = delete;
    CountingSemaphore& operator=(const CountingSemaphore&) = delete;
    ~CountingSemaphore() override { ::dispatch_release(semaphore_); }

    void signal() override {
        // The waiter may destroy this object as soon as it has the count, while this call still goes on.
        const dispatch_semaphore_t semaphore = semaphore_;
        ::dispatch_retain(semaphore);
        ::dispatch_semaphore_signal(semaphore);
        ::dispatch_release(semaphore);
    }

    bool wait(std::uint64_t deadline) override {
        return ::dispatch_semaphore_wait(semaphore_, dispatchTime(deadline)) == 0;
    }

  private:
    const dispatch_semaphore_t semaphore_;
};

}  // namespace

std::unique_ptr<Semaphore> DarwinDispatch::makeSemaphore(std::int64_t value) {
    return std::make_unique<CountingSemaphore>(value);
}

std::unique_ptr<Queue> DarwinDispatch::makeConcurrentQueue(const std::string& label) {
    return Platform::Darwin::makeConcurrentQueue(label);
}

std::unique_ptr<Queue> DarwinDispatch::makeSerialQueue(const std::string& label) {
    return Platform::Darwin::makeSerialQueue(label);
}

std::unique_ptr<Timer> DarwinDispatch::makeTimer(std::function<void()> handler) {
    return makeSourceTimer(std::move(handler));
}

}  // namespace Platform::Darwin
