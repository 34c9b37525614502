// The macOS side of dispatch, over operations that stand in for Grand Central Dispatch's own.
#include "ClockContract.h"
#include "DispatchContract.h"
#include "Platform/Darwin/DarwinClock.h"
#include "Platform/Darwin/DarwinDispatch.h"

namespace PlatformTests {

struct DarwinDispatchAndClock {
    Platform::Darwin::DarwinDispatch dispatch;
    Platform::Darwin::DarwinClock clock;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, DispatchContract, DarwinDispatchAndClock);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, ClockContract, Platform::Darwin::DarwinClock);

namespace {

using DarwinDispatchTest = DispatchContract<DarwinDispatchAndClock>;

TEST_F(DarwinDispatchTest, SemaphoreMayBeDestroyedWithLessThanItWasMadeWith) {
    const auto semaphore = dispatch.makeSemaphore(3);
    EXPECT_TRUE(semaphore->wait(0));
    EXPECT_TRUE(semaphore->wait(0));
}

TEST_F(DarwinDispatchTest, TimerMayBeDestroyedInAnyState) {
    (void)dispatch.makeTimer([] {});
    const auto cancelled = dispatch.makeTimer([] {});
    cancelled->cancel();
    const auto resumed = dispatch.makeTimer([] {});
    resumed->resume();
    resumed->resume();
    const auto both = dispatch.makeTimer([] {});
    both->resume();
    both->cancel();
    both->cancel();
}

// What its handler holds is gone when the destructor has returned.
TEST_F(DarwinDispatchTest, TimerLetsGoOfItsHandler) {
    const auto held = std::make_shared<int>();
    auto timer = dispatch.makeTimer([held] {});
    timer->schedule(Platform::kTimeNow, kMillisecond, 0);
    timer->resume();
    EXPECT_EQ(held.use_count(), 2);
    timer.reset();
    EXPECT_EQ(held.use_count(), 1);
}

// The handler holds the last reference to the timer and is taken apart by the cancellation.
TEST_F(DarwinDispatchTest, TimerMayBeHeldByItsOwnHandler) {
    const auto done = dispatch.makeSemaphore(0);
    struct Holder {
        explicit Holder(Platform::Semaphore& semaphore) : done(semaphore) {}
        Holder(const Holder&) = delete;
        Holder& operator=(const Holder&) = delete;
        ~Holder() {
            timer.reset();
            done.signal();
        }
        Platform::Semaphore& done;
        std::unique_ptr<Platform::Timer> timer;
    };
    {
        const auto holder = std::make_shared<Holder>(*done);
        holder->timer = dispatch.makeTimer([holder] {});
        holder->timer->resume();
        holder->timer->cancel();
    }
    EXPECT_TRUE(done->wait(clock.time(kLong)));
}

}  // namespace
}  // namespace PlatformTests
