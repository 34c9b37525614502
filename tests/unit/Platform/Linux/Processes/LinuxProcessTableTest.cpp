#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>

#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Posix/OwnRoot.h"
#include "ProcessTableContract.h"
#include "RealProcesses.h"
#include "support/FakeMac.h"

namespace {

/// What the system says on this thread about the number of its threads, if anything: -1 if it fails.
thread_local std::optional<int> toldThreads;

}  // namespace

/// Takes the place of the C library's.
extern "C" int sysinfo(struct sysinfo* facts) noexcept {
    const auto result = static_cast<int>(::syscall(SYS_sysinfo, facts));
    if (!toldThreads) {
        return result;
    }
    facts->procs = static_cast<unsigned short>(*toldThreads);
    return std::min(*toldThreads, 0);
}

namespace PlatformTests {

using Platform::Linux::LinuxProcessTable;

/// Processes of a fake Mac.
class FakeProcesses {
  public:
    [[nodiscard]] std::int32_t start(const std::string& name) {
        table.processes.push_back({++lastPid_, user(), name, pathOf(name), true});
        return lastPid_;
    }
    [[nodiscard]] std::string pathOf(const std::string& name) const { return "/Our Programs/" + name; }
    [[nodiscard]] std::uint32_t user() const { return 501; }
    void end(std::int32_t pid) {
        std::erase_if(table.processes, [pid](const auto& process) { return process.pid == pid; });
    }

    TestSupport::CallList calls;
    TestSupport::FakeProcessTable table{calls};

  private:
    std::int32_t lastPid_ = 100;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, ProcessTableContract, RealProcesses<LinuxProcessTable>);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ProcessTableContract, FakeProcesses);

namespace {

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

TEST(ProcessTable, KnowsThisProcess) {
    std::uint32_t user = 4711;
    EXPECT_GT(LinuxProcessTable().effectiveUser(::getpid(), user), 0);
    EXPECT_EQ(user, ::geteuid());
    EXPECT_EQ(pathOf(::getpid()), std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_EQ(nameOf(::getpid()), "PlatformTests");
}

TEST(ProcessTable, ListsTheProcessesOfOneUser) {
    const auto user = ::geteuid();
    EXPECT_TRUE(contains(allPids(PidListType::effectiveUser, user), ::getpid()));
    // Other processes may change their user at any time; this one does it here.
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isListed =
            becomeUser(kAlice) && contains(allPids(PidListType::effectiveUser, kAlice), ::getpid());
        ::_exit(isListed && !contains(allPids(PidListType::effectiveUser, user), ::getpid()) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(allPids(PidListType::effectiveUser, 3'999'999'999U).empty());
}

TEST(ProcessTable, TellsTheEffectiveAndNotTheRealUser) {
    const auto result = withoutPrivileges([] {
        std::uint32_t user = 4711;
        return LinuxProcessTable().effectiveUser(::getpid(), user) > 0 && user == ::geteuid() ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
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
    const std::string before = Scratch::currentFolder();
    ASSERT_EQ(::chdir(scratch.path().c_str()), 0);
    const Child child(scratch.path("A script with a long name"));
    ASSERT_EQ(::chdir(before.c_str()), 0);
    EXPECT_EQ(nameOf(child.pid()), "A script with a long name");
    EXPECT_TRUE(pathOf(child.pid()).starts_with('/'));
}

// Its first argument may be the one that the kernel's cut name stands for.
TEST(ProcessTable, KnowsTheWholeNameInTheFirstArgument) {
    int ready[2];
    int never[2];
    ASSERT_EQ(::pipe(ready), 0);
    ASSERT_EQ(::pipe(never), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(never[0], 0);
        ::dup2(ready[1], 1);
        const char* const arguments[] = {"A name of its own", "-c",
                                         "printf 'A name of its o' > /proc/$$/comm; echo x; read never",
                                         nullptr};
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::execv("/bin/sh", const_cast<char* const*>(arguments));
        ::_exit(127);
    }
    ::close(ready[1]);
    char byte = 0;
    EXPECT_EQ(::read(ready[0], &byte, 1), 1);
    EXPECT_EQ(nameOf(child), "A name of its own");
    for (const int end : {ready[0], never[0], never[1]}) {
        ::close(end);
    }
    ::kill(child, SIGKILL);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
}

TEST(ProcessTable, KeepsAShortNameUnchanged) {
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

/// The count of processes where the system tells of so many threads.
int countOfProcesses(int threads) {
    toldThreads = threads;
    const int count = LinuxProcessTable().listPids(PidListType::all, 0, {});
    toldThreads.reset();
    return count;
}

TEST(LinuxProcessTable, LeavesRoomForProcessesThatStartMeanwhile) {
    EXPECT_EQ(countOfProcesses(100), 120);
}

TEST(LinuxProcessTable, CountsNothingWhenTheSystemDoesNotTell) {
    EXPECT_EQ(countOfProcesses(-1), -1);
}

}  // namespace
}  // namespace PlatformTests
