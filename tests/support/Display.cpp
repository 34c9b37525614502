#include "support/Display.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/SimulatedMac.h"

namespace TestSupport {

namespace {

using namespace std::chrono_literals;

/// Starts `command` in a process group of its own, its output in `outputFile`; `extra`, when it is no -1,
/// becomes descriptor 3. Returns -1 when it cannot be started.
pid_t start(const std::vector<std::string>& command, const std::string& outputFile, int extra) {
    std::vector<std::string> words = command;
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    if (extra >= 0) {
        posix_spawn_file_actions_adddup2(&actions, extra, 3);
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    pid_t pid = -1;
    if (::posix_spawnp(&pid, pointers.front(), &actions, &attributes, pointers.data(), environ) != 0) {
        pid = -1;
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

void endGroup(pid_t leader) {
    if (leader > 0) {
        ::kill(-leader, SIGTERM);
        for (int i = 0; i < 50; ++i) {
            if (::waitpid(leader, nullptr, WNOHANG) != 0) {
                return;
            }
            std::this_thread::sleep_for(100ms);
        }
        ::kill(-leader, SIGKILL);
        ::waitpid(leader, nullptr, 0);
    }
}

/// The number that the server writes to the pipe once it listens; empty when none comes.
std::string readDisplayNumber(int pipe) {
    std::string number;
    pollfd ready{pipe, POLLIN, 0};
    while (::poll(&ready, 1, 20000) == 1) {
        char byte = 0;
        if (::read(pipe, &byte, 1) != 1 || byte == '\n') {
            break;
        }
        number += byte;
    }
    return number;
}

}  // namespace

BackgroundProgram::BackgroundProgram(const std::vector<std::string>& command, const std::string& outputFile)
    : pid_(start(command, outputFile, -1)) {}

BackgroundProgram::~BackgroundProgram() {
    if (status_ == -1) {
        endGroup(pid_);
    }
}

int BackgroundProgram::wait(int seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (status_ == -1 && pid_ > 0) {
        int status = 0;
        if (::waitpid(pid_, &status, WNOHANG) == pid_) {
            status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
        } else if (std::chrono::steady_clock::now() >= deadline) {
            break;
        } else {
            std::this_thread::sleep_for(20ms);
        }
    }
    return status_;
}

Display::Display(const std::string& scratch) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return;
    }
    server_ = start({"Xvfb", "-displayfd", "3", "-screen", "0", "1024x768x24", "-nolisten", "tcp"},
                    scratch + "/display.log", ends[1]);
    ::close(ends[1]);
    const std::string number = readDisplayNumber(ends[0]);
    ::close(ends[0]);
    if (!number.empty()) {
        name_ = ":" + number;
        xdotool({"mousemove", "1000", "740"});
    }
}

Display::~Display() {
    endGroup(server_);
}

void Display::xdotool(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{"env", "DISPLAY=" + name_, "xdotool"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    static_cast<void>(runProgram(command, 20));
}

void Display::click(double x, double y) const {
    xdotool(
        {"mousemove", "--sync", std::to_string(static_cast<int>(x)), std::to_string(static_cast<int>(y))});
    xdotool({"click", "1"});
}

void Display::press(const std::string& keys) const {
    xdotool({"key", "--clearmodifiers", keys});
}

void Display::type(const std::string& text) const {
    xdotool({"type", "--delay", "20", text});
}

bool Display::shows(const std::string& title, int seconds) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    do {
        const ProgramResult found = runProgram(
            {"env", "DISPLAY=" + name_, "xdotool", "search", "--onlyvisible", "--name", title}, 20);
        if (found.status == 0 && !found.out.empty()) {
            return true;
        }
        std::this_thread::sleep_for(100ms);
    } while (std::chrono::steady_clock::now() < deadline);
    return false;
}

void Display::focus(const std::string& title) const {
    xdotool({"search", "--onlyvisible", "--name", title, "windowfocus", "--sync"});
}

bool Display::writeScreenshot(const std::string& file) const {
    // Without the menu bar's strip at the top, which is no part of a window.
    return runProgram({"import", "-display", name_, "-window", "root", file}, 30).status == 0 &&
           runProgram({"mogrify", "-gravity", "north", "-chop", "0x26", "-bordercolor", "black", "-trim",
                       "+repage", "-bordercolor", "#8a93a3", "-border", "24", file},
                      30)
                   .status == 0;
}

}  // namespace TestSupport
