// The macOS process table, over operations that stand in for libproc's.
#include "Platform/Darwin/DarwinProcessTable.h"

#include <array>
#include <span>

#include "ProcessTableContract.h"
#include "RealProcesses.h"

namespace PlatformTests {

using Platform::Darwin::DarwinProcessTable;

INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, ProcessTableContract, RealProcesses<DarwinProcessTable>);

namespace {

using DarwinProcesses = ProcessTableContract<RealProcesses<DarwinProcessTable>>;

TEST_F(DarwinProcesses, AreCountedInBytesAsTheSystemCountsThem) {
    (void)world.start("one");
    std::array<std::int32_t, 4> pids{0, 0, 0, -1};
    EXPECT_EQ(table.listPids(Platform::PidListType::all, 0, std::span(pids).first(1)), 4);
    EXPECT_GT(pids[0], 0);
    EXPECT_EQ(pids[1], 0);
    EXPECT_EQ(table.listPids(Platform::PidListType::all, 0, {}) % 4, 0);
    EXPECT_GE(table.listPids(Platform::PidListType::all, 0, {}), 8);
}

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
