#include "Platform/Posix/PosixTermination.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>

namespace {

// Signal handlers belong to the process, so each test runs in a separate one.

/// Counted by hand: macOS has semaphores from 11.0 on.
struct Requests {
    std::mutex mutex;
    std::condition_variable came;
    int count = 0;
};

[[noreturn]] void answerRequestsAndExit() {
    static Requests requests;
    Platform::Posix::PosixTermination termination;
    termination.onRequest([] {
        const std::lock_guard lock(requests.mutex);
        ++requests.count;
        requests.came.notify_one();
    });
    for (int i = 1; i <= 2; ++i) {
        ::kill(::getpid(), SIGTERM);
        std::unique_lock lock(requests.mutex);
        requests.came.wait(lock, [i] { return requests.count == i; });
    }
    // Nobody answers while these come.
    std::unique_lock lock(requests.mutex);
    for (int i = 0; i < 3; ++i) {
        ::raise(SIGTERM);
    }
    requests.came.wait(lock, [] { return requests.count == 5; });
    ::_exit(7);
}

/// Whether a child process would be ended by the request.
[[noreturn]] void exitWithTheSignalOfAChild() {
    Platform::Posix::PosixTermination termination;
    termination.onRequest([] {});
    ::execl("/bin/sh", "sh", "-c", "kill -TERM $$; exit 0", nullptr);
    ::_exit(1);
}

TEST(TerminationDeathTest, AnswersEveryRequestInsteadOfEnding) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(answerRequestsAndExit(), testing::ExitedWithCode(7), "");
}

TEST(TerminationDeathTest, EndsAProgramThatTakesTheProcessOver) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exitWithTheSignalOfAChild(), testing::KilledBySignal(SIGTERM), "");
}

TEST(TerminationDeathTest, CanBeListenedForOnce) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Platform::Posix::PosixTermination termination;
    EXPECT_DEATH(
        {
            termination.onRequest([] {});
            termination.onRequest([] {});
        },
        "^Fatal error: SIGTERM can be listened for once per process, and takes a pipe\\.\n$");
}

}  // namespace
