#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "support/Scratch.h"

namespace PlatformTests {

/// A child process that runs `path`; ended when it goes out of scope.
class Child {
  public:
    explicit Child(const std::string& path, const std::string& argument = "60") {
        int ready[2];
        EXPECT_EQ(::pipe2(ready, O_CLOEXEC), 0);
        pid_ = ::fork();
        if (pid_ == 0) {
            ::execl(path.c_str(), path.c_str(), argument.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ready[1]);
        // Ends when the program runs: its descriptor is closed then.
        char byte = 0;
        EXPECT_EQ(::read(ready[0], &byte, 1), 0);
        ::close(ready[0]);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() { end(); }

    void end() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
            pid_ = -1;
        }
    }
    [[nodiscard]] pid_t pid() const { return pid_; }

  private:
    pid_t pid_ = -1;
};

inline void copyProgram(const std::string& from, const std::string& to) {
    std::filesystem::copy_file(from, to);
    ASSERT_EQ(::chmod(to.c_str(), 0755), 0);
}

/// Real processes for ProcessTableContract.
template <class Table>
class RealProcesses {
  public:
    [[nodiscard]] std::int32_t start(const std::string& name) {
        copyProgram("/bin/sleep", pathOf(name));
        auto child = std::make_unique<Child>(pathOf(name));
        const std::int32_t pid = child->pid();
        children_[pid] = std::move(child);
        return pid;
    }
    [[nodiscard]] std::string pathOf(const std::string& name) const { return scratch_.path(name); }
    [[nodiscard]] std::uint32_t user() const { return ::geteuid(); }
    void end(std::int32_t pid) { children_.erase(pid); }

    Table table;

  private:
    Scratch scratch_;
    std::map<std::int32_t, std::unique_ptr<Child>> children_;
};

}  // namespace PlatformTests
