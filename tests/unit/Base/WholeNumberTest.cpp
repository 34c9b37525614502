#include "Base/WholeNumber.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>

namespace {

using Base::wholeNumber;

TEST(WholeNumber, IsReadInDecimal) {
    EXPECT_EQ(wholeNumber<std::int32_t>("0"), 0);
    EXPECT_EQ(wholeNumber<std::int32_t>("0501"), 501);
    EXPECT_EQ(wholeNumber<std::int32_t>("-23"), -23);
}

TEST(WholeNumber, IsNothingWhereAnythingElseStands) {
    for (const char* const text : {"", "-", "+1", " 1", "1 ", "1\n", "1x", "x", "0x10", "1.0"}) {
        EXPECT_EQ(wholeNumber<std::int32_t>(text), std::nullopt) << text;
    }
    EXPECT_EQ(wholeNumber<std::uint32_t>("-1"), std::nullopt);
}

TEST(WholeNumber, FitsItsType) {
    EXPECT_EQ(wholeNumber<std::int32_t>("2147483647"), 2147483647);
    EXPECT_EQ(wholeNumber<std::int32_t>("-2147483648"), INT32_MIN);
    EXPECT_EQ(wholeNumber<std::int32_t>("2147483648"), std::nullopt);
    EXPECT_EQ(wholeNumber<std::uint32_t>("4294967295"), 4294967295U);
    EXPECT_EQ(wholeNumber<std::uint32_t>("4294967296"), std::nullopt);
}

}  // namespace
