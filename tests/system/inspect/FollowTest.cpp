// sentrel-inspect explain --follow: shows the steps of a run while its log grows.

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "InspectRun.h"
#include "SampleLog.h"
#include "support/InstallerLine.h"

namespace InspectTest {

namespace {

using TestSupport::installerLine;

/// The program with both ends of its streams in the test's hands.
class Following {
  public:
    Following() {
        std::array<int, 2> input{};
        std::array<int, 2> output{};
        EXPECT_EQ(::pipe2(input.data(), O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(output.data(), O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        std::string program = INSPECT_PROGRAM;
        std::string command = "explain";
        std::string option = "--follow";
        std::array<char*, 4> arguments{program.data(), command.data(), option.data(), nullptr};
        EXPECT_EQ(::posix_spawn(&child_, program.c_str(), &actions, nullptr, arguments.data(), environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(input[0]);
        ::close(output[1]);
        input_ = input[1];
        output_ = output[0];
    }
    Following(const Following&) = delete;
    Following& operator=(const Following&) = delete;
    ~Following() {
        end();
        ::close(output_);
        ::waitpid(child_, nullptr, 0);
    }

    void write(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = ::write(input_, text.data(), text.size());
            ASSERT_GT(count, 0);
            text.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    /// Ends the input.
    void end() {
        if (input_ >= 0) {
            ::close(input_);
        }
        input_ = -1;
    }

    /// Everything that was written until `text` was, or until the output ends; as long as that takes.
    [[nodiscard]] std::string readUntil(std::string_view text) {
        std::array<char, 4096> buffer{};
        while (read_.find(text) == std::string::npos) {
            const ssize_t count = ::read(output_, buffer.data(), buffer.size());
            if (count <= 0) {
                break;
            }
            read_.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return read_;
    }

  private:
    pid_t child_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string read_;
};

class Follow : public Inspect {};

TEST_F(Follow, TellsEachStepBeforeTheLogEnds) {
    const std::string log = logOf(finishedRun());
    // A step is over when one behind it writes.
    const std::size_t middle = log.find("Run Diagnostics.app");
    const std::size_t end = log.find("com.norvik.fileaccessd.plist", middle);
    ASSERT_NE(end, std::string::npos);
    Following following;
    following.write(log.substr(0, end));
    const std::string soFar = following.readUntil("Deleting applications\n  \u2713 Sentrel.app");
    EXPECT_TRUE(
        soFar.starts_with("Unloading daemons\n  \u2013 com.norvik.containmentd  \u2013 "
                          "com.norvik.fileaccessd"))
        << soFar;
    EXPECT_EQ(soFar.find("Deleting what remains"), std::string::npos) << soFar;
    following.write(log.substr(end));
    following.end();
    const std::string whole = following.readUntil("no such text");
    EXPECT_NE(whole.find("Deleting what remains\n"
                         "  \u2713 support files and directories  \u2013 auxiliary helper tools\n"
                         "\n"
                         "Run 1 of 1\n"),
              std::string::npos)
        << whole;
    EXPECT_NE(whole.find("  Result    Finished."), std::string::npos);
}

TEST_F(Follow, TellsTheStepAtWhichARunBrokeOffAndNoneBehindIt) {
    std::vector<SampleEntry> entries = finishedRun();
    while (entries.back().text != installerLine("Removed at /Applications/Sentrel.app")) {
        entries.pop_back();
    }
    const Outcome told = inspect({"explain", "--follow"}, logOf(entries));
    EXPECT_EQ(told.status, 0) << told.errors;
    EXPECT_NE(told.output.find("Deleting applications\n  \u2713 Sentrel.app\n\nRun 1 of 1\n"),
              std::string::npos)
        << told.output;
}

TEST_F(Follow, WritesAFailureOnASeparateLineWithItsReason) {
    std::vector<SampleEntry> entries = finishedRun();
    for (SampleEntry& entry : entries) {
        if (entry.text == installerLine("Removed at /Applications/Sentrel.app")) {
            entry.text = installerLine(
                "Error removing: \"/Applications/Sentrel.app\" could not be removed: "
                "Operation "
                "not permitted");
        }
    }
    const Outcome told = inspect({"explain", "--follow"}, logOf(entries));
    EXPECT_NE(told.output.find("Deleting applications\n"
                               "  \u2717 Sentrel.app\n"
                               "    /Applications/Sentrel.app: Operation not permitted\n"
                               "  \u2013 Run Diagnostics.app"),
              std::string::npos)
        << told.output;
}

TEST_F(Follow, CountsTheProcessesThatWereClosed) {
    std::vector<SampleEntry> entries = finishedRun();
    const auto first = std::find_if(entries.begin(), entries.end(), [](const SampleEntry& entry) {
        return entry.text == installerLine("Removed at /Applications/Sentrel.app");
    });
    entries.insert(first, {{1, kHelper, 20, installerLine("Kill result for pid 77: 0")},
                           {1, kHelper, 20, installerLine("Kill result for pid 78: 0")}});
    const Outcome told = inspect({"explain", "--follow"}, logOf(entries));
    EXPECT_NE(told.output.find("Closing applications\n  \u2713 2 processes\nDeleting applications\n"),
              std::string::npos)
        << told.output;
    EXPECT_NE(inspect({"explain", "--follow"}, logOf(finishedRun()))
                  .output.find("Closing applications\n  \u2013 none was running\n"),
              std::string::npos);
}

TEST_F(Follow, TellsTwoRunsOneAfterTheOther) {
    std::vector<SampleEntry> entries = finishedRun();
    for (SampleEntry entry : finishedRun()) {
        entry.pid += 100;
        entries.push_back(entry);
    }
    const std::string text = inspect({"explain", "--follow"}, logOf(entries)).output;
    const std::string beginning = "Unloading daemons\n";
    const std::size_t second = text.find("\n\n" + beginning, 1);
    ASSERT_NE(second, std::string::npos) << text;
    EXPECT_EQ(text.find("\n\n" + beginning, second + 1), std::string::npos);
    EXPECT_LT(second, text.find("\n\nRun 1 of 2\n"));
}

}  // namespace

}  // namespace InspectTest
