#include "ProbeProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace WindowTests {

namespace {

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> result;
    result.reserve(words.size() + 1);
    for (std::string& word : words) {
        result.push_back(word.data());
    }
    result.push_back(nullptr);
    return result;
}

/// The environment of this process with another display.
std::vector<std::string> environmentFor(const std::string& display) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        if (std::string(*entry).rfind("DISPLAY=", 0) != 0) {
            result.emplace_back(*entry);
        }
    }
    if (!display.empty()) {
        result.push_back("DISPLAY=" + display);
    }
    return result;
}

/// Starts a program with these descriptors as its standard input, output and error.
pid_t start(std::vector<std::string> command, const std::string& display, int input, int output, int errors) {
    std::vector<std::string> environment = environmentFor(display);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, 0);
    posix_spawn_file_actions_adddup2(&actions, output, 1);
    posix_spawn_file_actions_adddup2(&actions, errors, 2);
    pid_t child = -1;
    if (posix_spawnp(&child, command.front().c_str(), &actions, nullptr, pointers(command).data(),
                     pointers(environment).data()) != 0) {
        child = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    return child;
}

void endProcess(pid_t process, int signal) {
    if (process > 0) {
        kill(process, signal);
        waitpid(process, nullptr, 0);
    }
}

}  // namespace

ProbeProcess::ProbeProcess(const std::string& display, const std::vector<std::string>& settings,
                           Streams streams) {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) {
        return;
    }
    std::vector<std::string> command{WINDOW_PROBE, WINDOW_LIBRARY};
    command.insert(command.end(), settings.begin(), settings.end());
    child_ = start(command, display, input[0], output[1],
                   streams == Streams::outputAndErrors ? output[1] : STDERR_FILENO);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    output_ = output[0];
}

ProbeProcess::~ProbeProcess() {
    endProcess(child_, SIGKILL);
    close(input_);
    close(output_);
}

void ProbeProcess::tell(const std::string& command) const {
    const std::string line = command + "\n";
    // A probe that has ended is noticed when it is listened to.
    [[maybe_unused]] const ssize_t written = write(input_, line.data(), line.size());
}

bool ProbeProcess::readLine(std::string& line, std::chrono::milliseconds limit) {
    while (rest_.find('\n') == std::string::npos) {
        pollfd ready{output_, POLLIN, 0};
        std::array<char, 512> buffer{};
        if (poll(&ready, 1, static_cast<int>(limit.count())) != 1) {
            return false;
        }
        const ssize_t count = read(output_, buffer.data(), buffer.size());
        if (count <= 0) {
            return false;
        }
        rest_.append(buffer.data(), static_cast<std::size_t>(count));
    }
    const std::size_t end = rest_.find('\n');
    line = rest_.substr(0, end);
    rest_.erase(0, end + 1);
    return true;
}

bool ProbeProcess::hears(const std::string& line, std::chrono::seconds limit) {
    std::string next;
    while (readLine(next, limit)) {
        heard_.push_back(next);
        if (next == line) {
            return true;
        }
    }
    return false;
}

int ProbeProcess::status() {
    int status = 0;
    if (child_ <= 0 || !TestSupport::comesTrue([&] { return waitpid(child_, &status, WNOHANG) == child_; })) {
        return -1;
    }
    child_ = -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace WindowTests
