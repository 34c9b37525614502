#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>

#include <chrono>

#include "Platform/Clock.h"

/// What every Clock promises that shows real time.
namespace PlatformTests {

template <class Implementation>
class ClockContract : public testing::Test {
  protected:
    Implementation implementation;
    Platform::Clock& clock = implementation;
};

TYPED_TEST_SUITE_P(ClockContract);

TYPED_TEST_P(ClockContract, IsMonotonicInNanoseconds) {
    // Another clock, read before and after each reading of this one, bounds it from both sides.
    const auto outerStart = std::chrono::steady_clock::now();
    const std::uint64_t before = this->clock.now();
    const auto innerStart = std::chrono::steady_clock::now();
    this->clock.sleep(1);
    const std::chrono::nanoseconds slept = std::chrono::steady_clock::now() - innerStart;
    const std::uint64_t after = this->clock.now();
    const std::chrono::nanoseconds outer = std::chrono::steady_clock::now() - outerStart;
    EXPECT_GE(slept, std::chrono::seconds(1));
    EXPECT_GE(after - before, static_cast<std::uint64_t>(slept.count()));
    EXPECT_LE(after - before, static_cast<std::uint64_t>(outer.count()));
    EXPECT_GE(this->clock.time(5), after + 5);
}

TYPED_TEST_P(ClockContract, SleepsOnWhenASignalArrives) {
    struct sigaction handler {};
    struct sigaction before {};
    handler.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGALRM, &handler, &before), 0);
    const itimerval soon{{0, 0}, {0, 100'000}};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &soon, nullptr), 0);
    const std::uint64_t start = this->clock.now();
    this->clock.sleep(1);
    EXPECT_GE(this->clock.now() - start, 1'000'000'000U);
    ::sigaction(SIGALRM, &before, nullptr);
}

REGISTER_TYPED_TEST_SUITE_P(ClockContract, IsMonotonicInNanoseconds, SleepsOnWhenASignalArrives);

}  // namespace PlatformTests
