#include <gtest/gtest.h>

#include <cstdint>

#include "Base/Archive/BinaryPlistWriter.h"

namespace {

TEST(BinaryPlistWriter, OverflowsWithTheFirstIdThatItsReferencesCannotHold) {
    Base::BinaryPlistWriter writer(2);
    for (std::uint32_t ids = 0; ids < 65536; ++ids) {
        EXPECT_EQ(writer.newObject(), ids);
    }
    EXPECT_FALSE(writer.overflowed());
    EXPECT_EQ(writer.newObject(), 65536U);
    EXPECT_TRUE(writer.overflowed());
}

}  // namespace
