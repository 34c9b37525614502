// The macOS process table, over operations that stand in for libproc's.
#include "Platform/Darwin/DarwinProcessTable.h"

#include "ProcessTableContract.h"
#include "RealProcesses.h"

namespace PlatformTests {

using Platform::Darwin::DarwinProcessTable;

INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, ProcessTableContract, RealProcesses<DarwinProcessTable>);

namespace {

using DarwinProcesses = ProcessTableContract<RealProcesses<DarwinProcessTable>>;

TEST_F(DarwinProcesses, HaveNamesOfThirtyTwoBytes) {
    const std::int32_t pid = world.start(std::string(40, 'n'));
    EXPECT_EQ(nameOf(pid), std::string(32, 'n'));
}

// Thirty-one bytes, then a character of which one byte fits.
TEST_F(DarwinProcesses, HaveNoHalfCharacterAtTheEndOfTheirNames) {
    const std::int32_t pid = world.start(std::string(31, 'n') + "\xc3\xa9 and more");
    EXPECT_EQ(nameOf(pid), std::string(31, 'n'));
}

}  // namespace
}  // namespace PlatformTests
