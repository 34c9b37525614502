#include "Base/FatalError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>

namespace {

void say(std::string_view line) {
    std::fprintf(stderr, "last words: %s\n", std::string(line).c_str());
}

void failAgain(std::string_view line) {
    say(line);
    Base::fatalError("the log failed");
}

/// Ends the process, with `handler` for its last words.
void end(Base::LastWords handler, std::string_view text) {
    Base::setLastWords(handler);
    Base::fatalError(text);
}

TEST(FatalErrorDeathTest, EndsTheProcessWithItsLineOnStandardError) {
    EXPECT_EXIT(end(nullptr, "no way"), testing::KilledBySignal(SIGABRT),
                testing::Eq("Fatal error: no way\n"));
}

TEST(FatalErrorDeathTest, HandsTheLineToTheHandlerOfLastWords) {
    EXPECT_EXIT(end(&say, "no way"), testing::KilledBySignal(SIGABRT),
                testing::Eq("Fatal error: no way\nlast words: Fatal error: no way\n"));
}

TEST(FatalErrorDeathTest, StaysOnOneLineWhateverItNames) {
    EXPECT_EXIT(
        end(&say, "cannot run /a\nb"), testing::KilledBySignal(SIGABRT),
        testing::Eq("Fatal error: cannot run /a\\x0ab\nlast words: Fatal error: cannot run /a\\x0ab\n"));
}

TEST(FatalErrorDeathTest, OfTheHandlerItselfDoesNotComeBackToIt) {
    EXPECT_EXIT(
        end(&failAgain, "first"), testing::KilledBySignal(SIGABRT),
        testing::Eq("Fatal error: first\nlast words: Fatal error: first\nFatal error: the log failed\n"));
}

}  // namespace
