#include "ATerminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>

#include <array>

namespace InspectUnitTests {

ATerminal::ATerminal() : main_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    EXPECT_EQ(::grantpt(main_), 0);
    EXPECT_EQ(::unlockpt(main_), 0);
    terminal_ = ::open(::ptsname(main_), O_RDWR | O_NOCTTY | O_CLOEXEC);
    EXPECT_GE(terminal_, 0);
}

ATerminal::~ATerminal() {
    ::close(terminal_);
    ::close(main_);
}

void ATerminal::setColumns(unsigned short columns) const {
    const winsize size{24, columns, 0, 0};
    EXPECT_EQ(::ioctl(terminal_, TIOCSWINSZ, &size), 0);
}

std::size_t ATerminal::ask(const std::function<std::size_t()>& question, const Environment& environment,
                           int stream, bool isTerminal) const {
    std::array<int, 2> answer{};
    EXPECT_EQ(::pipe2(answer.data(), O_CLOEXEC), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        for (const auto& [name, value] : environment) {
            value ? ::setenv(name, value->c_str(), 1) : ::unsetenv(name);
        }
        ::dup2(isTerminal ? terminal_ : ::open("/dev/null", O_WRONLY), stream);
        const std::size_t result = question();
        ::_exit(::write(answer[1], &result, sizeof result) == sizeof result ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    ::close(answer[1]);
    std::size_t result = 0;
    EXPECT_EQ(::read(answer[0], &result, sizeof result), static_cast<ssize_t>(sizeof result));
    ::close(answer[0]);
    return result;
}

std::string ATerminal::written() const {
    constexpr char kEnd = '\x04';
    EXPECT_EQ(::write(terminal_, &kEnd, 1), 1);
    std::string text;
    for (char byte = 0; ::read(main_, &byte, 1) == 1 && byte != kEnd;) {
        text += byte;
    }
    return text;
}

}  // namespace InspectUnitTests
