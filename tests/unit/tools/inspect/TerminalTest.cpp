// What goes to a terminal: each question is asked in a process of its own, with the streams of the test's
// choice.

#include "Terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <array>

#include "ATerminal.h"
#include "Files.h"

namespace InspectUnitTests {

namespace {

class Terminal : public testing::Test, protected ATerminal {};

std::size_t colours() {
    return Inspect::usesColour() ? 1 : 0;
}

TEST_F(Terminal, ShowsColoursUnlessToldOtherwise) {
    const auto shows = [this](const std::optional<std::string>& refusal,
                              const std::optional<std::string>& terminal) {
        return ask(&colours, {{"NO_COLOR", refusal}, {"TERM", terminal}}) == 1;
    };
    EXPECT_TRUE(shows(std::nullopt, "xterm"));
    EXPECT_TRUE(shows("", "xterm"));
    EXPECT_FALSE(shows("1", "xterm"));
    EXPECT_FALSE(shows("\1", "xterm"));
    EXPECT_FALSE(shows(std::nullopt, "dumb"));
    EXPECT_TRUE(shows(std::nullopt, "dumber"));
    EXPECT_FALSE(shows(std::nullopt, std::nullopt));
    EXPECT_EQ(ask(&colours, {{"NO_COLOR", std::nullopt}, {"TERM", "xterm"}}, STDOUT_FILENO, false), 0U);
}

TEST_F(Terminal, TellsItsWidth) {
    const Environment untold{{"COLUMNS", std::nullopt}};
    setColumns(77);
    EXPECT_EQ(ask(&Inspect::outputWidth, untold), 77U);
    setColumns(1);
    EXPECT_EQ(ask(&Inspect::outputWidth, untold), 1U);
    setColumns(0);
    EXPECT_EQ(ask(&Inspect::outputWidth, untold), 120U);
    EXPECT_EQ(ask(&Inspect::outputWidth, untold, STDOUT_FILENO, false), 120U);
}

TEST_F(Terminal, HasTheWidthThatTheEnvironmentTells) {
    setColumns(77);
    for (const auto& [told, width] :
         std::vector<std::pair<std::string, std::size_t>>{{"20", 20},
                                                          {"19", 77},
                                                          {"1000", 1000},
                                                          {"1001", 77},
                                                          {"", 77},
                                                          {"x", 77},
                                                          {"50x", 77},
                                                          {" 50", 77},
                                                          {"-50", 77},
                                                          {"99999999999999999999", 77}}) {
        EXPECT_EQ(ask(&Inspect::outputWidth, {{"COLUMNS", told}}), width) << told;
    }
    EXPECT_EQ(ask(&Inspect::outputWidth, {{"COLUMNS", "50"}}, STDOUT_FILENO, false), 50U);
}

TEST_F(Terminal, WidensAReportBeyondAHundredColumnsOnly) {
    EXPECT_EQ(ask(&Inspect::reportWidth, {{"COLUMNS", "80"}}), 100U);
    EXPECT_EQ(ask(&Inspect::reportWidth, {{"COLUMNS", "150"}}), 150U);
    EXPECT_EQ(ask(&Inspect::reportWidth, {{"COLUMNS", "150"}}, STDOUT_FILENO, false), 100U);
}

std::size_t showProgress() {
    Inspect::Progress progress;
    progress.show("one");
    progress.show("two");
    return 0;
}

std::size_t showNothing() {
    const Inspect::Progress progress;
    return 0;
}

TEST_F(Terminal, ShowsProgressOnOneLineThatIsWipedAtTheEnd) {
    EXPECT_EQ(ask(&showProgress, {}, STDERR_FILENO), 0U);
    EXPECT_EQ(written(), "\r\x1b[Kone\r\x1b[Ktwo\r\x1b[K");
    EXPECT_EQ(ask(&showNothing, {}, STDERR_FILENO), 0U);
    EXPECT_EQ(written(), "");
}

TEST_F(Terminal, IsNeededForProgress) {
    EXPECT_EQ(ask(
                  [] {
                      std::array<int, 2> errors{};
                      if (::pipe2(errors.data(), O_CLOEXEC | O_NONBLOCK) != 0 ||
                          ::dup2(errors[1], STDERR_FILENO) < 0) {
                          return std::size_t{99};
                      }
                      showProgress();
                      char byte = 0;
                      return ::read(errors[0], &byte, 1) == 1 ? std::size_t{1} : std::size_t{0};
                  },
                  {}),
              0U);
}

}  // namespace

}  // namespace InspectUnitTests
