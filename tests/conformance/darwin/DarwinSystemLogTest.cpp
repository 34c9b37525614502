// The macOS system log over GNUstep's NSLog, which writes to standard error.
#include "Platform/Darwin/DarwinSystemLog.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/Scratch.h"

namespace PlatformTests {
namespace {

/// What logging `text` writes to standard error after the heading.
std::string logged(std::string_view text) {
    const Scratch scratch;
    const int saved = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    const int captured = ::open(scratch.path("log").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ::dup2(captured, STDERR_FILENO);
    Platform::Darwin::DarwinSystemLog().log(text);
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    ::close(captured);
    const std::string written = contentsOf(scratch.path("log"));
    const std::size_t heading = written.find("] ");
    return heading != std::string::npos ? written.substr(heading + 2) : "no heading: " + written;
}

TEST(DarwinSystemLog, WritesTheTextAndNeverTakesItForAFormat) {
    EXPECT_EQ(logged("[SNTM Installer] Removed at /Users/x"), "[SNTM Installer] Removed at /Users/x\n");
    EXPECT_EQ(logged("100%s %n %@ %d %%"), "100%s %n %@ %d %%\n");
    EXPECT_EQ(logged("[SNTM Installer]\nError description: x\n;"),
              "[SNTM Installer]\nError description: x\n;\n");
}

TEST(DarwinSystemLog, WritesLongTextsWhole) {
    const std::string text(100'000, 'x');
    EXPECT_TRUE(logged(text) == text + "\n");
}

}  // namespace
}  // namespace PlatformTests
