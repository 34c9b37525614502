#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "Platform/Linux/LinuxProcessTable.h"
#include "Scratch.h"

namespace PlatformTests {
namespace {

using Platform::PidListType;
using Platform::Linux::LinuxProcessTable;

std::string nameOf(std::int32_t pid) {
    std::array<char, 4096> buffer{};
    const int length = LinuxProcessTable().name(pid, buffer);
    return std::string(buffer.data(), static_cast<std::size_t>(std::max(length, 0)));
}

std::string pathOf(std::int32_t pid) {
    std::array<char, 4096> buffer{};
    const int length = LinuxProcessTable().path(pid, buffer);
    return std::string(buffer.data(), static_cast<std::size_t>(std::max(length, 0)));
}

std::vector<std::int32_t> allPids(PidListType type, std::uint32_t user) {
    LinuxProcessTable table;
    std::vector<std::int32_t> pids(static_cast<std::size_t>(std::max(table.listPids(type, user, {}), 0)));
    pids.resize(static_cast<std::size_t>(std::max(table.listPids(type, user, pids), 0)));
    return pids;
}

bool contains(const std::vector<std::int32_t>& pids, pid_t pid) {
    return std::find(pids.begin(), pids.end(), pid) != pids.end();
}

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

void copyProgram(const std::string& from, const std::string& to) {
    std::filesystem::copy_file(from, to);
    ASSERT_EQ(::chmod(to.c_str(), 0755), 0);
}

TEST(ProcessTable, KnowsThisProcess) {
    std::uint32_t user = 4711;
    EXPECT_GT(LinuxProcessTable().effectiveUser(::getpid(), user), 0);
    EXPECT_EQ(user, ::geteuid());
    EXPECT_EQ(pathOf(::getpid()), std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_EQ(nameOf(::getpid()), "PlatformTests");
}

TEST(ProcessTable, ListsEveryProcessOnce) {
    const Child child("/bin/sleep");
    std::vector<std::int32_t> pids = allPids(PidListType::all, 0);
    EXPECT_TRUE(contains(pids, ::getpid()));
    EXPECT_TRUE(contains(pids, child.pid()));
    std::sort(pids.begin(), pids.end());
    EXPECT_EQ(std::adjacent_find(pids.begin(), pids.end()), pids.end());
}

TEST(ProcessTable, ListsTheProcessesOfOneUser) {
    const std::vector<std::int32_t> pids = allPids(PidListType::effectiveUser, ::geteuid());
    EXPECT_TRUE(contains(pids, ::getpid()));
    for (const std::int32_t pid : pids) {
        std::uint32_t user = ::geteuid();
        (void)LinuxProcessTable().effectiveUser(pid, user);
        EXPECT_EQ(user, ::geteuid());
    }
    EXPECT_TRUE(allPids(PidListType::effectiveUser, 3'999'999'999U).empty());
}

TEST(ProcessTable, TellsTheEffectiveAndNotTheRealUser) {
    const auto result = withoutPrivileges([] {
        std::uint32_t user = 4711;
        return LinuxProcessTable().effectiveUser(::getpid(), user) > 0 && user == ::geteuid() ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
}

TEST(ProcessTable, FillsNoMoreThanTheSpan) {
    std::array<std::int32_t, 3> pids{-1, -1, -1};
    const Child child("/bin/sleep");
    EXPECT_EQ(LinuxProcessTable().listPids(PidListType::all, 0, std::span(pids).first(2)), 2);
    EXPECT_GT(pids[0], 0);
    EXPECT_GT(pids[1], 0);
    EXPECT_EQ(pids[2], -1);
}

TEST(ProcessTable, CountsAtLeastWhatItLists) {
    LinuxProcessTable table;
    EXPECT_GE(table.listPids(PidListType::all, 0, {}), static_cast<int>(allPids(PidListType::all, 0).size()));
}

TEST(ProcessTable, KnowsLongNamesWhole) {
    const Scratch scratch;
    copyProgram("/bin/sleep", scratch.path("NORVIK Antivirus"));
    const Child child(scratch.path("NORVIK Antivirus"));
    EXPECT_EQ(nameOf(child.pid()), "NORVIK Antivirus");
    EXPECT_EQ(pathOf(child.pid()), scratch.path("NORVIK Antivirus"));
}

TEST(ProcessTable, KnowsNamesAroundTheKernelsLimit) {
    const Scratch scratch;
    for (const std::string& name : {std::string("fourteen bytes"), std::string("fifteen bytes!!"),
                                    std::string("sixteen bytes !!"), std::string(200, 'n')}) {
        copyProgram("/bin/sleep", scratch.path(name));
        const Child child(scratch.path(name));
        EXPECT_EQ(nameOf(child.pid()), name);
        EXPECT_EQ(pathOf(child.pid()), scratch.path(name));
    }
}

TEST(ProcessTable, KnowsTheWholeNameOfAScript) {
    const Scratch scratch;
    makeFile(scratch.path("A script with a long name"), "#!/bin/sh\nread never < fifo\n", 0755);
    ASSERT_EQ(::mkfifo(scratch.path("fifo").c_str(), 0600), 0);
    ASSERT_EQ(::chdir(scratch.path().c_str()), 0);
    const Child child(scratch.path("A script with a long name"));
    ASSERT_EQ(::chdir("/"), 0);
    EXPECT_EQ(nameOf(child.pid()), "A script with a long name");
    EXPECT_TRUE(pathOf(child.pid()).starts_with('/'));
}

TEST(ProcessTable, KeepsAShortNameOfItsOwn) {
    char before[16];
    ASSERT_EQ(::prctl(PR_GET_NAME, before), 0);
    ASSERT_EQ(::prctl(PR_SET_NAME, "short"), 0);
    EXPECT_EQ(nameOf(::gettid()), "short");
    ASSERT_EQ(::prctl(PR_SET_NAME, "line\nbreak"), 0);
    EXPECT_EQ(nameOf(::gettid()), "line\nbreak");
    ASSERT_EQ(::prctl(PR_SET_NAME, "fourteen long\xc3\xa9"), 0);
    EXPECT_EQ(nameOf(::gettid()), "fourteen long\xc3\xa9");
    // Fourteen bytes, then a character of which one byte fits.
    ASSERT_EQ(::prctl(PR_SET_NAME, "fourteen byte!\xc3\xa9"), 0);
    EXPECT_EQ(nameOf(::gettid()), "fourteen byte!");
    ::prctl(PR_SET_NAME, before);
}

TEST(ProcessTable, KnowsThePathOfAnUnlinkedExecutable) {
    const Scratch scratch;
    copyProgram("/bin/sleep", scratch.path("A program removed while it runs"));
    copyProgram("/bin/sleep", scratch.path("kept (deleted)"));
    const Child child(scratch.path("A program removed while it runs"));
    const Child kept(scratch.path("kept (deleted)"));
    ASSERT_EQ(::unlink(scratch.path("A program removed while it runs").c_str()), 0);
    EXPECT_EQ(pathOf(child.pid()), scratch.path("A program removed while it runs"));
    EXPECT_EQ(nameOf(child.pid()), "A program removed while it runs");
    EXPECT_EQ(pathOf(kept.pid()), scratch.path("kept (deleted)"));
}

TEST(ProcessTable, CutsToTheSpan) {
    std::array<char, 6> buffer{'-', '-', '-', '-', '-', '-'};
    EXPECT_EQ(LinuxProcessTable().name(::getpid(), std::span(buffer).first(5)), 5);
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), "Platf-");
    EXPECT_EQ(LinuxProcessTable().path(::getpid(), std::span(buffer).first(1)), 1);
    EXPECT_EQ(buffer[0], '/');
}

TEST(ProcessTable, KnowsNothingOfAVanishedProcess) {
    Child child("/bin/sleep");
    const pid_t pid = child.pid();
    child.end();
    std::uint32_t user = 4711;
    EXPECT_LE(LinuxProcessTable().effectiveUser(pid, user), 0);
    EXPECT_EQ(user, 4711U);
    EXPECT_EQ(nameOf(pid), "");
    EXPECT_EQ(pathOf(pid), "");
    EXPECT_FALSE(contains(allPids(PidListType::all, 0), pid));
    EXPECT_EQ(LinuxProcessTable().kill(pid, 0), -1);
}

TEST(ProcessTable, KnowsNoPathOfAZombie) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(0);
    }
    siginfo_t info{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(pathOf(child), "");
    std::uint32_t user = 4711;
    EXPECT_GT(LinuxProcessTable().effectiveUser(child, user), 0);
    EXPECT_EQ(user, ::geteuid());
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
}

TEST(ProcessTable, KillsWithTheSignalGiven) {
    const Child child("/bin/sleep");
    EXPECT_EQ(LinuxProcessTable().kill(child.pid(), SIGTERM), 0);
    siginfo_t info{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(child.pid()), &info, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(info.si_code, CLD_KILLED);
    EXPECT_EQ(info.si_status, SIGTERM);
}

}  // namespace
}  // namespace PlatformTests
