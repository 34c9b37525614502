#include "Base/CheckedSum.h"

#include <gtest/gtest.h>

#include <csignal>
#include <limits>

#include "Base/FatalError.h"

namespace {

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

TEST(CheckedSum, AddsUpToTheLimits) {
    EXPECT_EQ(Base::checkedSum(2, 3), 5);
    EXPECT_EQ(Base::checkedSum(kMax - 1, 1), kMax);
    EXPECT_EQ(Base::checkedSum(kMin + 1, -1), kMin);
    EXPECT_EQ(Base::checkedSum(kMax, kMin), -1);
}

TEST(CheckedSumDeathTest, EndsTheProcessOnOverflow) {
    EXPECT_EXIT(static_cast<void>(Base::checkedSum(kMax, 1)), testing::KilledBySignal(SIGABRT),
                "^Fatal error: 32-bit sum overflow\n$");
}

TEST(CheckedSumDeathTest, EndsTheProcessOnUnderflow) {
    EXPECT_EXIT(static_cast<void>(Base::checkedSum(kMin, -1)), testing::KilledBySignal(SIGABRT),
                "^Fatal error: 32-bit sum overflow\n$");
}

TEST(FatalErrorDeathTest, WritesOneLineAndAborts) {
    EXPECT_EXIT(Base::fatalError("Should be overriden by subclasses."), testing::KilledBySignal(SIGABRT),
                "^Fatal error: Should be overriden by subclasses\\.\n$");
}

}  // namespace
