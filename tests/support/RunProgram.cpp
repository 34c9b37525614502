#include "support/RunProgram.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace TestSupport {

namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
    Pipe() {
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
    }
    std::array<int, 2> ends{};
};

/// Reads both pipes until they end or time is up.
void collect(int out, int err, Clock::time_point deadline, ProgramResult& result) {
    std::array<pollfd, 2> pipes{pollfd{out, POLLIN, 0}, pollfd{err, POLLIN, 0}};
    std::array<std::string*, 2> texts{&result.out, &result.err};
    std::array<char, 65536> buffer;
    while ((pipes[0].fd >= 0 || pipes[1].fd >= 0) && Clock::now() < deadline) {
        static_cast<void>(::poll(pipes.data(), pipes.size(), 100));
        for (std::size_t index = 0; index < pipes.size(); ++index) {
            if (pipes[index].fd < 0 || pipes[index].revents == 0) {
                continue;
            }
            const ssize_t count = ::read(pipes[index].fd, buffer.data(), buffer.size());
            if (count <= 0) {
                pipes[index].fd = -1;
            } else {
                texts[index]->append(buffer.data(), static_cast<std::size_t>(count));
            }
        }
    }
}

}  // namespace

ProgramResult runProgram(const std::vector<std::string>& command, std::chrono::seconds limit) {
    Pipe out;
    Pipe err;
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, out.ends[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, err.ends[1], STDERR_FILENO);
    std::vector<std::string> words = command;
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    ProgramResult result;
    pid_t child = 0;
    const int failure = ::posix_spawnp(&child, pointers.front(), &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(out.ends[1]);
    ::close(err.ends[1]);
    if (failure == 0) {
        const auto deadline = Clock::now() + limit;
        collect(out.ends[0], err.ends[0], deadline, result);
        if (Clock::now() >= deadline) {
            ::kill(child, SIGTERM);
        }
        int status = 0;
        while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    ::close(out.ends[0]);
    ::close(err.ends[0]);
    return result;
}

}  // namespace TestSupport
