#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "DispatchContract.h"
#include "Platform/Linux/Processes/LinuxDispatch.h"
#include "Platform/Linux/Processes/MonotonicCondition.h"
#include "Platform/Posix/PosixClock.h"

namespace PlatformTests {

struct LinuxDispatchAndClock {
    Platform::Linux::LinuxDispatch dispatch;
    Platform::Posix::PosixClock clock;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, DispatchContract, LinuxDispatchAndClock);

/// A concurrent queue whose threads all wait.
class BusyQueue : public testing::Test {
  protected:
    static constexpr int kThreads = 64;

    BusyQueue() {
        for (int number = 0; number < kThreads; ++number) {
            queue_->async([this] {
                started_.release();
                released_.acquire();
            });
        }
        for (int number = 0; number < kThreads; ++number) {
            started_.acquire();
        }
    }
    ~BusyQueue() override { released_.release(kThreads); }

    std::counting_semaphore<> started_{0};
    std::counting_semaphore<> released_{0};
    std::unique_ptr<Platform::Queue> queue_ = Platform::Linux::LinuxDispatch().makeConcurrentQueue("busy");
};

TEST_F(BusyQueue, HasNoMoreThreads) {
    std::atomic<bool> ran = false;
    queue_->async([&ran] { ran = true; });
    // Another thread would have begun by then.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_FALSE(ran);
    released_.release(kThreads);
    queue_.reset();
    EXPECT_TRUE(ran);
}

TEST_F(BusyQueue, StartsABlockThatIsWaitedForAfterTheOneBeforeIt) {
    std::mutex mutex;
    std::vector<std::string> order;
    const auto note = [&](const char* what) {
        const std::lock_guard lock(mutex);
        order.emplace_back(what);
    };
    queue_->async([&] { note("first"); });
    std::thread waiting([&] { queue_->sync([&] { note("second"); }); });
    // It would have begun by then if it did not wait.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    released_.release(kThreads);
    waiting.join();
    queue_.reset();
    EXPECT_EQ(order, (std::vector<std::string>{"first", "second"}));
}

TEST(MonotonicConditionDeathTest, EndsTheProcessThatLetsGoOfWhatItDoesNotHold) {
    Platform::Linux::MonotonicCondition condition;
    Platform::Linux::MonotonicCondition::Lock lock(condition);
    lock.unlock();
    EXPECT_DEATH(lock.unlock(), "^Fatal error: A mutex or condition could not be used\\.\n$");
}

}  // namespace PlatformTests
