#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <thread>
#include <vector>

#include "Platform/Posix/PosixTaskRunner.h"
#include "TaskRunnerContract.h"
#include "support/FakeMac.h"
#include "support/Scratch.h"

namespace PlatformTests {

/// Scripts in a scratch folder.
class RealPrograms {
  public:
    [[nodiscard]] std::string runnable(const std::string& output, const std::string& error,
                                       int status) const {
        makeFile(scratch_.path("program"),
                 "#!/bin/sh\nprintf '" + output + "'; printf '" + error + "' >&2; exit " +
                     std::to_string(status) + "\n",
                 0755);
        return scratch_.path("program");
    }
    [[nodiscard]] std::string notRunnable() const { return scratch_.path("missing"); }

    Platform::Posix::PosixTaskRunner tasks;

  private:
    Scratch scratch_;
};

class FakePrograms {
  public:
    [[nodiscard]] std::string runnable(const std::string& output, const std::string& error, int status) {
        tasks.results["/program"] = {output, error, status};
        return "/program";
    }
    [[nodiscard]] std::string notRunnable() {
        tasks.notExecutable.insert("/missing");
        return "/missing";
    }

    TestSupport::CallList calls;
    TestSupport::FakeTaskRunner tasks{calls};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, TaskRunnerContract, RealPrograms);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TaskRunnerContract, FakePrograms);

namespace {

using Arguments = std::optional<std::vector<std::string>>;

struct Result {
    std::string output;
    std::string error;
    std::int32_t status = -1;
    Platform::TerminationReason reason{};
};

Result runShell(const std::string& script) {
    Platform::Posix::PosixTaskRunner tasks;
    const auto task = tasks.launch("/bin/sh", Arguments({"-c", script}));
    if (!task) {
        ADD_FAILURE() << "/bin/sh cannot be run";
        return {};
    }
    task->waitUntilExit();
    return {task->readOutputToEnd(), task->readErrorToEnd(), task->terminationStatus(),
            task->terminationReason()};
}

TEST(Task, GivesBytesAsTheyAre) {
    EXPECT_EQ(runShell("printf 'a\\000b\\377\\n'").output, std::string("a\0b\xff\n", 5));
}

TEST(Task, TellsTheSignalThatEndedTheChild) {
    const Result result = runShell("echo last words >&2; kill -9 $$");
    EXPECT_EQ(result.error, "last words\n");
    EXPECT_EQ(result.status, SIGKILL);
    EXPECT_EQ(result.reason, Platform::TerminationReason::uncaughtSignal);
}

TEST(Task, HoldsWhatAPipeTakesUntilItIsRead) {
    const Result result = runShell("head -c 60000 /dev/zero | tr '\\000' x >&2");
    EXPECT_EQ(result.error, std::string(60000, 'x'));
}

TEST(Task, HandsArgumentsOverExactly) {
    Platform::Posix::PosixTaskRunner tasks;
    const std::vector<std::string> arguments{"", "a b", "$HOME", "*", "-n", "line\nbreak", "\xff", "'\"\\"};
    std::vector<std::string> all{"-c", "for each in \"$0\" \"$@\"; do printf '<%s>' \"$each\"; done"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const auto task = tasks.launch("/bin/sh", all);
    ASSERT_TRUE(task);
    task->waitUntilExit();
    std::string expected;
    for (const std::string& each : arguments) {
        expected += "<" + each + ">";
    }
    EXPECT_EQ(task->readOutputToEnd(), expected);
}

TEST(Task, GetsItsPathAsFirstArgument) {
    Platform::Posix::PosixTaskRunner tasks;
    const auto task = tasks.launch("/bin/cat", Arguments({"/proc/self/cmdline"}));
    ASSERT_TRUE(task);
    task->waitUntilExit();
    EXPECT_EQ(task->readOutputToEnd(), std::string("/bin/cat\0/proc/self/cmdline\0", 28));
}

TEST(Task, IsNullWhenThePathCannotBeRun) {
    const Scratch scratch;
    makeFile(scratch.path("not executable"));
    makeFile(scratch.path("no program"), "text without an interpreter\n", 0755);
    Platform::Posix::PosixTaskRunner tasks;
    const int before = openDescriptors();
    for (const std::string& path :
         {scratch.path("missing"), scratch.path("not executable"), scratch.path("no program"), scratch.path(),
          std::string("sh"), std::string(), std::string("/bin/sh\0x", 9)}) {
        EXPECT_EQ(tasks.launch(path, std::nullopt), nullptr) << path;
    }
    EXPECT_EQ(tasks.launch("/bin/true", Arguments({std::string("a\0b", 3)})), nullptr);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(Task, InheritsNoDescriptorButTheStandardOnes) {
    const int leaking = ::open("/dev/null", O_RDONLY);
    const int high = ::fcntl(leaking, F_DUPFD, 700);
    Platform::Posix::PosixTaskRunner tasks;
    const auto other = tasks.launch("/bin/sleep", Arguments({"0"}));
    const Result result = runShell("for fd in /proc/$$/fd/*; do [ -L $fd ] && echo ${fd##*/}; done");
    ::close(leaking);
    ::close(high);
    EXPECT_EQ(result.output, "0\n1\n2\n");
}

TEST(Task, InheritsEnvironmentAndStandardInput) {
    ASSERT_EQ(::setenv("PLATFORM_TESTS_VARIABLE", "some value", 1), 0);
    const int file = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int saved = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    ASSERT_EQ(::dup2(file, STDIN_FILENO), STDIN_FILENO);
    const Result result = runShell("echo $PLATFORM_TESTS_VARIABLE; readlink /proc/self/fd/0");
    if (saved >= 0) {
        ::dup2(saved, STDIN_FILENO);
        ::close(saved);
    }
    ::close(file);
    EXPECT_EQ(result.output, "some value\n/dev/null\n");
}

TEST(Task, StartsWithSignalsReset) {
    sigset_t blocked;
    sigset_t before;
    ::sigfillset(&blocked);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &blocked, &before), 0);
    const std::array ignored = {SIGPIPE, SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGALRM, SIGXFSZ};
    std::vector<sighandler_t> handlers;
    for (const int signal : ignored) {
        handlers.push_back(::signal(signal, SIG_IGN));
    }
    // Not by way of a shell, which treats signals in its own way.
    Platform::Posix::PosixTaskRunner tasks;
    const auto task = tasks.launch("/bin/grep", Arguments({"-E", "SigBlk|SigIgn", "/proc/self/status"}));
    Result result;
    if (task) {
        task->waitUntilExit();
        result.output = task->readOutputToEnd();
    }
    for (std::size_t index = 0; index < ignored.size(); ++index) {
        ::signal(ignored[index], handlers[index]);
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ASSERT_TRUE(task);
    EXPECT_TRUE(result.output.starts_with("SigBlk:\t0000000000000000\nSigIgn:\t")) << result.output;
    // Signals 32 and 33 are the C library's own business.
    constexpr std::uint64_t kOwnSignals = std::uint64_t{3} << 31U;
    EXPECT_EQ(std::stoull(result.output.substr(result.output.rfind('\t') + 1), nullptr, 16) & ~kOwnSignals,
              0U);
}

// A child that still writes when nobody will read it receives a signal; otherwise neither it nor the wait for
// it would ever end.
TEST(Task, ThatIsDestroyedWaitsForNoUnreadBytes) {
    for (const char* script : {"head -c 1000000 /dev/zero", "head -c 1000000 /dev/zero >&2"}) {
        Platform::Posix::PosixTaskRunner tasks;
        auto task = tasks.launch("/bin/sh", Arguments({"-c", script}));
        ASSERT_TRUE(task);
        task.reset();
        // It was waited for.
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
    }
}

// The standard descriptors of a program without a terminal may be closed, and the pipes then get their
// numbers.
TEST(Task, RunsWhenTheStandardDescriptorsAreClosed) {
    const auto result = withoutPrivileges([] {
        ::close(0);
        ::close(1);
        ::close(2);
        Platform::Posix::PosixTaskRunner tasks;
        const auto task = tasks.launch("/bin/sh", Arguments({"-c", "echo out; echo err >&2"}));
        if (!task) {
            return 1;
        }
        task->waitUntilExit();
        return task->readOutputToEnd() == "out\n" && task->readErrorToEnd() == "err\n" ? 0 : 2;
    });
    EXPECT_EQ(result, std::optional(0));
}

TEST(Task, ClosesItsPipesAndWaitsWhenItIsDestroyed) {
    Platform::Posix::PosixTaskRunner tasks;
    const int before = openDescriptors();
    {
        // Ends only because nobody reads any more.
        const auto task = tasks.launch("/bin/sh", Arguments({"-c", "while echo x; do :; done"}));
        ASSERT_TRUE(task);
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(Task, RunsUntilItIsKilled) {
    Platform::Posix::PosixTaskRunner tasks;
    const auto task = tasks.launch("/bin/sleep", std::vector<std::string>{"3600"});
    ASSERT_TRUE(task);
    EXPECT_TRUE(task->isRunning());
    task->kill();
    EXPECT_FALSE(task->isRunning());
    EXPECT_EQ(task->terminationReason(), Platform::TerminationReason::uncaughtSignal);
    EXPECT_EQ(task->terminationStatus(), SIGKILL);
}

TEST(Task, StopsRunningWhenTheChildEndsAndThenHasItsStatus) {
    Platform::Posix::PosixTaskRunner tasks;
    const auto task = tasks.launch("/bin/sh", std::vector<std::string>{"-c", "exit 7"});
    ASSERT_TRUE(task);
    while (task->isRunning()) {
        std::this_thread::yield();
    }
    EXPECT_EQ(task->terminationStatus(), 7);
}

TEST(TaskRunner, StartsChildrenFromSeveralThreads) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([number] {
            for (int round = 0; round < 10; ++round) {
                EXPECT_EQ(runShell("echo " + std::to_string(number)).output, std::to_string(number) + "\n");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(TaskDeathTest, HasNoStatusBeforeItWasWaitedFor) {
    EXPECT_DEATH(
        {
            Platform::Posix::PosixTaskRunner tasks;
            const auto task = tasks.launch("/bin/true", std::nullopt);
            (void)task->terminationStatus();
        },
        "^Fatal error: The status of a child process was asked for before it had been waited for\\.\n$");
}

}  // namespace
}  // namespace PlatformTests
