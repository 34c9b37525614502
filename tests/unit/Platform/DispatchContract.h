#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <limits>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

#include "Platform/Clock.h"
#include "Platform/Dispatch.h"

/// What every Dispatch promises. Services has the members `dispatch` and `clock`.
namespace PlatformTests {

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kLong = 1'200'000 * kMillisecond;

template <class Services>
class DispatchContract : public testing::Test {
  protected:
    Services services;
    Platform::Dispatch& dispatch = services.dispatch;
    Platform::Clock& clock = services.clock;
};

TYPED_TEST_SUITE_P(DispatchContract);

TYPED_TEST_P(DispatchContract, SemaphoreHandsOutItsCounts) {
    const auto semaphore = this->dispatch.makeSemaphore(2);
    EXPECT_TRUE(semaphore->wait(this->clock.now()));
    EXPECT_TRUE(semaphore->wait(0));
    EXPECT_FALSE(semaphore->wait(this->clock.now()));
    semaphore->signal();
    EXPECT_TRUE(semaphore->wait(std::numeric_limits<std::uint64_t>::max()));
}

TYPED_TEST_P(DispatchContract, SemaphoreGivesUpAtItsDeadlineAndNotBefore) {
    const auto semaphore = this->dispatch.makeSemaphore(0);
    const std::uint64_t deadline = this->clock.time(50 * kMillisecond);
    EXPECT_FALSE(semaphore->wait(deadline));
    EXPECT_GE(this->clock.now(), deadline);
}

TYPED_TEST_P(DispatchContract, SemaphoreWakesAWaiter) {
    const auto semaphore = this->dispatch.makeSemaphore(0);
    std::thread other([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        semaphore->signal();
    });
    EXPECT_TRUE(semaphore->wait(this->clock.time(kLong)));
    other.join();
}

TYPED_TEST_P(DispatchContract, SemaphoreMayGoAwayAsSoonAsItIsTaken) {
    for (int round = 0; round < 200; ++round) {
        auto semaphore = this->dispatch.makeSemaphore(0);
        std::thread other([&semaphore] { semaphore->signal(); });
        EXPECT_TRUE(semaphore->wait(this->clock.time(kLong)));
        semaphore.reset();
        other.join();
    }
}

TYPED_TEST_P(DispatchContract, QueueRunsBlocksOnOtherThreadsAndAtOnceReturns) {
    const auto started = this->dispatch.makeSemaphore(0);
    const auto released = this->dispatch.makeSemaphore(0);
    std::atomic<bool> otherThread = false;
    const auto caller = std::this_thread::get_id();
    const auto queue = this->dispatch.makeConcurrentQueue("com.norvik.test");
    queue->async([&] {
        otherThread = std::this_thread::get_id() != caller;
        started->signal();
        (void)released->wait(this->clock.time(kLong));
    });
    EXPECT_TRUE(started->wait(this->clock.time(kLong)));
    EXPECT_TRUE(otherThread);
    released->signal();
}

TYPED_TEST_P(DispatchContract, QueueLetsBlocksOverlap) {
    constexpr int kBlocks = 8;
    const auto arrived = this->dispatch.makeSemaphore(0);
    const auto released = this->dispatch.makeSemaphore(0);
    const auto queue = this->dispatch.makeConcurrentQueue("com.norvik.test");
    for (int number = 0; number < kBlocks; ++number) {
        queue->async([&] {
            arrived->signal();
            (void)released->wait(this->clock.time(kLong));
        });
    }
    for (int number = 0; number < kBlocks; ++number) {
        EXPECT_TRUE(arrived->wait(this->clock.time(kLong)));
    }
    bool ran = false;
    queue->sync([&] { ran = true; });
    EXPECT_TRUE(ran);
    for (int number = 0; number < kBlocks; ++number) {
        released->signal();
    }
}

TYPED_TEST_P(DispatchContract, QueueWaitsForItsBlocksWhenItIsDestroyed) {
    std::atomic<int> ran = 0;
    {
        const auto queue = this->dispatch.makeConcurrentQueue("com.norvik.test");
        for (int number = 0; number < 100; ++number) {
            queue->async([&] {
                std::this_thread::sleep_for(std::chrono::microseconds(100));
                ++ran;
            });
        }
    }
    EXPECT_EQ(ran, 100);
}

TYPED_TEST_P(DispatchContract, QueueReturnsFromSyncWhenTheBlockHasEnded) {
    std::atomic<int> total = 0;
    auto queue = this->dispatch.makeConcurrentQueue("com.norvik.test");
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < 100; ++round) {
                int mine = 0;
                queue->async([&] { ++total; });
                queue->sync([&] { mine = round + 1; });
                EXPECT_EQ(mine, round + 1);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    queue.reset();
    EXPECT_EQ(total, 400);
}

TYPED_TEST_P(DispatchContract, QueueRunsSyncFromItsOwnBlocks) {
    const auto done = this->dispatch.makeSemaphore(0);
    const auto queue = this->dispatch.makeConcurrentQueue("com.norvik.test");
    queue->async([&] { queue->sync([&] { done->signal(); }); });
    EXPECT_TRUE(done->wait(this->clock.time(kLong)));
}

TYPED_TEST_P(DispatchContract, SerialQueueRunsOneBlockAfterTheOtherOnOneThread) {
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    {
        const auto queue = this->dispatch.makeSerialQueue("com.norvik.test");
        for (int number = 0; number < 200; ++number) {
            const auto block = [&, number] {
                order.push_back(number);
                threads.push_back(std::this_thread::get_id());
            };
            if (number % 20 == 19) {
                queue->sync(block);
                EXPECT_EQ(order.size(), static_cast<std::size_t>(number) + 1);
            } else {
                queue->async(block);
            }
        }
    }
    std::vector<int> expected(200);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
    EXPECT_EQ(threads, std::vector<std::thread::id>(200, threads.front()));
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TYPED_TEST_P(DispatchContract, QueueMayBeDestroyedByItsOwnBlock) {
    const auto done = this->dispatch.makeSemaphore(0);
    auto queue = std::make_shared<std::unique_ptr<Platform::Queue>>(
        this->dispatch.makeConcurrentQueue("com.norvik.test"));
    const auto released = this->dispatch.makeSemaphore(0);
    (*queue)->async([&done, &released, &clock = this->clock, queue] {
        (void)released->wait(clock.time(kLong));
        queue->reset();
        done->signal();
    });
    queue.reset();
    released->signal();
    EXPECT_TRUE(done->wait(this->clock.time(kLong)));
}

TYPED_TEST_P(DispatchContract, TimerIsMadeSuspended) {
    std::atomic<int> fired = 0;
    {
        const auto timer = this->dispatch.makeTimer([&] { ++fired; });
        timer->schedule(Platform::kTimeNow, kMillisecond, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
    }
    EXPECT_EQ(fired, 0);
}

TYPED_TEST_P(DispatchContract, TimerFiresAtItsStartAndThenAtEachInterval) {
    const auto fired = this->dispatch.makeSemaphore(0);
    const auto timer = this->dispatch.makeTimer([&] { fired->signal(); });
    const std::uint64_t start = this->clock.time(20 * kMillisecond);
    timer->schedule(start, 10 * kMillisecond, 0);
    timer->resume();
    EXPECT_TRUE(fired->wait(this->clock.time(kLong)));
    EXPECT_GE(this->clock.now(), start);
    EXPECT_TRUE(fired->wait(this->clock.time(kLong)));
    EXPECT_TRUE(fired->wait(this->clock.time(kLong)));
    EXPECT_GE(this->clock.now(), start + 20 * kMillisecond);
}

// An absolute time taken for an interval: the first firing is at once, the next one some day.
TYPED_TEST_P(DispatchContract, TimerMayBeResumedTwice) {
    const auto fired = this->dispatch.makeSemaphore(0);
    const auto timer = this->dispatch.makeTimer([&] { fired->signal(); });
    timer->schedule(0, kLong, 0);
    timer->resume();
    timer->resume();
    EXPECT_TRUE(fired->wait(this->clock.time(kLong)));
}

TYPED_TEST_P(DispatchContract, TimerUsesItsIntervalUnchanged) {
    const auto fired = this->dispatch.makeSemaphore(0);
    for (const std::uint64_t interval :
         {this->clock.time(kLong), std::numeric_limits<std::uint64_t>::max()}) {
        const auto timer = this->dispatch.makeTimer([&] { fired->signal(); });
        timer->schedule(Platform::kTimeNow, interval, 0);
        timer->resume();
        EXPECT_TRUE(fired->wait(this->clock.time(kLong)));
        EXPECT_FALSE(fired->wait(this->clock.time(30 * kMillisecond)));
    }
}

TYPED_TEST_P(DispatchContract, TimerDoesNotFireOnceItIsCancelledOrDestroyed) {
    std::atomic<int> fired = 0;
    std::unique_ptr<Platform::Timer> timer;
    bool cancelledInTime = false;
    for (std::uint64_t delay = 50 * kMillisecond; !cancelledInTime; delay *= 2) {
        fired = 0;
        timer = this->dispatch.makeTimer([&] { ++fired; });
        const std::uint64_t start = this->clock.time(delay);
        timer->schedule(start, kMillisecond, 0);
        timer->resume();
        timer->cancel();
        // This thread may have had to wait for longer than that.
        cancelledInTime = this->clock.now() < start;
        std::this_thread::sleep_for(std::chrono::nanoseconds(delay) + std::chrono::milliseconds(30));
    }
    EXPECT_EQ(fired, 0);
    timer = this->dispatch.makeTimer([&] { ++fired; });
    timer->schedule(Platform::kTimeNow, kMillisecond, 0);
    timer->resume();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    timer.reset();
    const int count = fired;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(fired, count);
}

TYPED_TEST_P(DispatchContract, TimerMayBeDestroyedByItsHandler) {
    const auto done = this->dispatch.makeSemaphore(0);
    auto timer = std::make_shared<std::unique_ptr<Platform::Timer>>();
    *timer = this->dispatch.makeTimer([&done, timer] {
        timer->reset();
        done->signal();
    });
    (*timer)->schedule(this->clock.time(20 * kMillisecond), kMillisecond, 0);
    (*timer)->resume();
    timer.reset();
    EXPECT_TRUE(done->wait(this->clock.time(kLong)));
}

REGISTER_TYPED_TEST_SUITE_P(DispatchContract, SemaphoreHandsOutItsCounts,
                            SemaphoreGivesUpAtItsDeadlineAndNotBefore, SemaphoreWakesAWaiter,
                            SemaphoreMayGoAwayAsSoonAsItIsTaken,
                            QueueRunsBlocksOnOtherThreadsAndAtOnceReturns, QueueLetsBlocksOverlap,
                            QueueWaitsForItsBlocksWhenItIsDestroyed, QueueReturnsFromSyncWhenTheBlockHasEnded,
                            QueueRunsSyncFromItsOwnBlocks, SerialQueueRunsOneBlockAfterTheOtherOnOneThread,
                            QueueMayBeDestroyedByItsOwnBlock, TimerIsMadeSuspended, TimerMayBeResumedTwice,
                            TimerFiresAtItsStartAndThenAtEachInterval, TimerUsesItsIntervalUnchanged,
                            TimerDoesNotFireOnceItIsCancelledOrDestroyed, TimerMayBeDestroyedByItsHandler);

}  // namespace PlatformTests
