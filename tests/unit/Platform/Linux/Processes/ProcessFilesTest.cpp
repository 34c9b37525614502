#include "Platform/Linux/Processes/ProcessFiles.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace PlatformTests {
namespace {

using Platform::Linux::readProcessFile;

// Nothing is mapped at a process's first address, so its memory opens and cannot be read (proc(5)).
TEST(ProcessFile, IsNoneIfItDoesNotOpenOrCannotBeRead) {
    EXPECT_EQ(readProcessFile(::getpid(), "no such file", 10), std::nullopt);
    EXPECT_EQ(readProcessFile(::getpid(), "mem", 10), std::nullopt);
}

TEST(ProcessFile, IsReadUpToTheLimit) {
    EXPECT_EQ(readProcessFile(::getpid(), "statm", 1).value_or("").size(), 1U);
    // More than one call reads, of a file that is longer still.
    constexpr std::size_t kLimit = 5000;
    ASSERT_GT(readProcessFile(::getpid(), "smaps", 1 << 20).value_or("").size(), 10'000U);
    EXPECT_EQ(readProcessFile(::getpid(), "smaps", kLimit).value_or("").size(), kLimit);
}

}  // namespace
}  // namespace PlatformTests
