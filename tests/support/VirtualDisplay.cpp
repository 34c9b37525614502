#include "support/VirtualDisplay.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/RunProgram.h"

namespace TestSupport {

using namespace std::chrono_literals;

namespace {

/// Reads from the pipe to the end of a line.
std::string readLine(int fd) {
    std::string line;
    char byte = 0;
    while (::read(fd, &byte, 1) == 1 && byte != '\n') {
        line += byte;
    }
    return line;
}

}  // namespace

VirtualDisplay::VirtualDisplay(const std::string& authority) : authority_(authority) {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe";
        return;
    }
    std::vector<std::string> words{"Xvfb",        "-displayfd", "3",   "-screen", "0",
                                   "1024x768x24", "-nolisten",  "tcp", "-noreset"};
    if (!authority.empty()) {
        words.insert(words.end(), {"-auth", authority});
    }
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDWR, 0);
    ::posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], 3);
    const int failure =
        ::posix_spawnp(&server_, pointers.front(), &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    const std::string number = failure == 0 ? readLine(ends[0]) : "";
    ::close(ends[0]);
    EXPECT_FALSE(number.empty()) << "Xvfb does not start (package xvfb)";
    name_ = ":" + number;
}

VirtualDisplay::~VirtualDisplay() {
    end(SIGTERM);
}

void VirtualDisplay::kill() {
    end(SIGKILL);
}

void VirtualDisplay::end(int signal) {
    if (server_ > 0) {
        ::kill(server_, signal);
        while (::waitpid(server_, nullptr, 0) < 0 && errno == EINTR) {
        }
        server_ = -1;
    }
}

std::string VirtualDisplay::xdotool(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{"env", "DISPLAY=" + name_};
    if (!authority_.empty()) {
        command.push_back("XAUTHORITY=" + authority_);
    }
    command.emplace_back("xdotool");
    command.insert(command.end(), arguments.begin(), arguments.end());
    const ProgramResult result = runProgram(command);
    return result.status == 0 ? result.out : "";
}

bool VirtualDisplay::waitForWindow(const std::string& title, std::chrono::seconds limit) const {
    return comesTrue([&] { return xdotool({"getwindowfocus", "getwindowname"}) == title + "\n"; }, limit);
}

bool VirtualDisplay::waitUntilGone(const std::string& title, std::chrono::seconds limit) const {
    return comesTrue([&] { return !shows(title); }, limit);
}

bool VirtualDisplay::shows(const std::string& title) const {
    return !xdotool({"search", "--onlyvisible", "--name", title}).empty();
}

int VirtualDisplay::windowHeight(const std::string& title) const {
    std::string text;
    // A search fails too when any window goes meanwhile.
    static_cast<void>(comesTrue([&] {
        text = xdotool({"search", "--onlyvisible", "--name", title, "getwindowgeometry", "--shell"});
        return !text.empty();
    }));
    const std::size_t line = text.find("\nHEIGHT=");
    return line == std::string::npos ? 0 : std::stoi(text.substr(line + 8));
}

void VirtualDisplay::type(const std::string& text) const {
    xdotool({"type", text});
}

void VirtualDisplay::press(const std::string& keys) const {
    xdotool({"key", keys});
}

void VirtualDisplay::click(double x, double y) const {
    xdotool({"mousemove", std::to_string(static_cast<int>(x)), std::to_string(static_cast<int>(y)), "sleep",
             "0.2", "mousedown", "1", "sleep", "0.4", "mouseup", "1", "sleep", "0.2"});
}

bool VirtualDisplay::clickUntil(double x, double y, const Outcome& outcome) const {
    return repeatUntil([&] { click(x, y); }, outcome);
}

bool VirtualDisplay::writeScreenshot(const std::string& file) const {
    // The strip at the top is the menu bar.
    return runProgram({"import", "-display", name_, "-window", "root", file}).status == 0 &&
           runProgram({"mogrify", "-gravity", "north", "-chop", "0x26", "-bordercolor", "black", "-trim",
                       "+repage", "-bordercolor", "#8a93a3", "-border", "24", file})
                   .status == 0;
}

}  // namespace TestSupport
