#include "Platform/Posix/PosixTermination.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <semaphore>

namespace {

// Signal handlers belong to the process, so each test runs in a separate one.

[[noreturn]] void answerTwoRequestsAndExit() {
    static std::counting_semaphore<> requests(0);
    Platform::Posix::PosixTermination termination;
    termination.onRequest([] { requests.release(); });
    for (int i = 0; i < 2; ++i) {
        ::kill(::getpid(), SIGTERM);
        requests.acquire();
    }
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
    EXPECT_EXIT(answerTwoRequestsAndExit(), testing::ExitedWithCode(7), "");
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
        "SIGTERM can be listened for once per process");
}

}  // namespace
