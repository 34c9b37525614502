#include "support/BackgroundProgram.h"

#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace TestSupport {

namespace {

/// Starts `command` in a new process group, its output in `outputFile`. Returns -1 if it cannot be started.
pid_t start(const std::vector<std::string>& command, const std::string& outputFile) {
    std::vector<std::string> words = command;
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
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
        if (comesTrue([leader] { return ::waitpid(leader, nullptr, WNOHANG) != 0; })) {
            return;
        }
        ::kill(-leader, SIGKILL);
        ::waitpid(leader, nullptr, 0);
    }
}

}  // namespace

BackgroundProgram::BackgroundProgram(const std::vector<std::string>& command, const std::string& outputFile)
    : pid_(start(command, outputFile)) {}

BackgroundProgram::~BackgroundProgram() {
    if (status_ == -1) {
        endGroup(pid_);
    }
}

int BackgroundProgram::wait(std::chrono::seconds limit) {
    static_cast<void>(comesTrue(
        [this] {
            int status = 0;
            if (status_ == -1 && pid_ > 0 && ::waitpid(pid_, &status, WNOHANG) == pid_) {
                status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
            }
            return status_ != -1 || pid_ <= 0;
        },
        limit));
    return status_;
}

}  // namespace TestSupport
