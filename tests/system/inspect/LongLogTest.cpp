// sentrel-inspect explain on logs that are larger than the memory that it is given.

#include <array>
#include <csignal>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "InspectRun.h"
#include "SampleLog.h"
#include "support/InstallerLine.h"

namespace InspectTest {

namespace {

using TestSupport::installerLine;

/// What the program may allocate, and how much it is given to read: whoever keeps a quarter of it fails.
constexpr std::size_t kMemory = std::size_t{4} << 20;
constexpr std::size_t kAmount = 4 * kMemory;

using Lines = std::function<std::string(int number)>;

/// Feeds the program from a pipe, and takes what it says from another file.
class LongLog : public Inspect {
  protected:
    /// `before`, then lines until the amount is reached, then `after`.
    [[nodiscard]] Outcome explain(const std::string& before, const Lines& line, const std::string& after) {
        std::array<int, 2> input{};
        EXPECT_EQ(::pipe2(input.data(), O_CLOEXEC), 0);
        const pid_t child = start(input[0]);
        ::close(input[0]);
        std::signal(SIGPIPE, SIG_IGN);
        bool reads = write(input[1], before);
        std::string block;
        std::size_t written = 0;
        for (int number = 0; reads && written < kAmount; ++number) {
            block += line(number);
            if (block.size() >= kBlock) {
                reads = write(input[1], block);
                written += block.size();
                block.clear();
            }
        }
        reads = reads && write(input[1], block + after);
        ::close(input[1]);
        EXPECT_TRUE(reads) << "it did not read to the end";
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read("out"), read("err")};
    }

  private:
    static constexpr std::size_t kBlock = std::size_t{1} << 16;

    pid_t start(int input) const {
        const std::string out = path("out");
        const std::string err = path("err");
        const pid_t child = ::fork();
        if (child != 0) {
            return child;
        }
        const rlimit limit{kMemory, kMemory};
        if (::dup2(input, STDIN_FILENO) == STDIN_FILENO &&
            ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO) == STDOUT_FILENO &&
            ::dup2(::open(err.c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO) == STDERR_FILENO &&
            ::setrlimit(RLIMIT_DATA, &limit) == 0) {
            ::execl(INSPECT_PROGRAM, INSPECT_PROGRAM, "explain", nullptr);
        }
        ::_exit(127);
    }

    static bool write(int pipe, std::string_view text) {
        while (!text.empty()) {
            const ssize_t count = ::write(pipe, text.data(), text.size());
            if (count <= 0) {
                return false;
            }
            text.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }
};

std::string lineOf(std::string_view program, int pid, const std::string& text) {
    return "Nov 21 10:00:02 Mac " + std::string(program) + '[' + std::to_string(pid) + "]: " + text + '\n';
}

std::string filler(int number) {
    return std::to_string(number) + std::string(100, 'x');
}

TEST_F(LongLog, OfOtherProgramsTakesNoMemory) {
    const std::string run = logOf(finishedRun());
    const Outcome told = explain(
        run, [](int number) { return lineOf("kernel", 0, filler(number)); }, run);
    EXPECT_EQ(told.status, 0);
    EXPECT_EQ(told.errors, "");
    EXPECT_NE(told.output.find("Run 2 of 2\n"), std::string::npos) << told.output;
    EXPECT_NE(told.output.rfind("  Result    Finished. The helper went through all 75 steps"),
              std::string::npos);
}

TEST_F(LongLog, OfOneEntryTakesNoMemory) {
    const Outcome told = explain(
        logOf(finishedRun()), [](int number) { return filler(number) + "\n"; }, "");
    EXPECT_EQ(told.status, 0) << told.errors;
    EXPECT_TRUE(told.output.starts_with("Run 1 of 1\n")) << told.output;
}

// A run with words of its own, one with steps that go on for ever, one after the other.
TEST_F(LongLog, OfARunTakesNoMemory) {
    const auto line = [](int number) {
        return lineOf(kUninstaller, 18, filler(number)) + lineOf(kHelper, 20, filler(number)) +
               lineOf(kHelper, 20, installerLine("Kill result for pid ") + std::to_string(number) + ": 0");
    };
    const std::string begin =
        lineOf(kUninstaller, 18, installerLine("found installed version true, updatable: true"));
    const Outcome told =
        explain(begin, line, lineOf(kUninstaller, 18, installerLine("Uninstallation failed.")));
    EXPECT_EQ(told.status, 0) << told.errors;
    EXPECT_TRUE(told.output.starts_with("Run 1 of 1\n")) << told.output;
    EXPECT_NE(told.output.find("  Result    Timed out: "), std::string::npos) << told.output;
}

TEST_F(LongLog, OfManyRunsTellsTheLastHundred) {
    int last = 0;
    const auto line = [&last](int number) {
        last = number + 1;
        return lineOf(kUninstaller, 100 + number, filler(number)) +
               lineOf(kUninstaller, 100 + number, "Antivirus cannot be uninstalled") +
               lineOf(kUninstaller, 100 + number, installerLine("Uninstallation failed."));
    };
    const Outcome told = explain("", line, "");
    EXPECT_EQ(told.status, 0) << told.errors;
    EXPECT_EQ(told.errors, "sentrel-inspect: Of the log's runs only the last 100 are told.\n");
    const std::string of = " of " + std::to_string(last) + "\n";
    EXPECT_TRUE(told.output.starts_with("Run " + std::to_string(last - 99) + of))
        << told.output.substr(0, 80);
    EXPECT_NE(told.output.find("\nRun " + std::to_string(last) + of), std::string::npos);
}

}  // namespace

}  // namespace InspectTest
