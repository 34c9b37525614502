// Runs the uninstaller in a simulated Mac and kills the installer helper (SIGKILL) at one moment:
//   helper-killer start MICROSECONDS UNINSTALLER     so long after the helper was first seen
//   helper-killer removal MICROSECONDS UNINSTALLER   so long after the first application has gone
//   helper-killer watch 0 UNINSTALLER                never; waits until it dies by itself
//   helper-killer never 0 UNINSTALLER                never
// An uninstaller that has lost its helper is ended too. Prints
//   killed                the helper was at work until then
//   late                  the uninstaller had its result before
//   removal US end US     under `never`: when, after the helper was first seen, these moments came

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr const char* kHelper = "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper";
constexpr const char* kFirstApplication = "/Applications/Sentrel.app";
constexpr auto kPoll = microseconds(500);
constexpr auto kPatience = std::chrono::seconds(100);

// The C library's header declares neither for C++.
int openProcess(pid_t pid) {
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
}

bool killProcess(int process) {
    return ::syscall(SYS_pidfd_send_signal, process, SIGKILL, nullptr, 0) == 0;
}

/// A descriptor of the helper's process; negative while there is none.
int findHelper() {
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc", ignored)) {
        const int pid = std::atoi(entry.path().filename().c_str());
        // Its list deletes the helper's file: the link ends in " (deleted)" then.
        if (pid > 1 && fs::read_symlink(entry.path() / "exe", ignored).string().starts_with(kHelper)) {
            return openProcess(pid);
        }
    }
    return -1;
}

/// Whether the process of this descriptor ends before `until`.
bool endsBefore(int process, Clock::time_point until) {
    const auto rest = std::chrono::ceil<std::chrono::nanoseconds>(until - Clock::now());
    const auto nanoseconds = std::max<long>(rest.count(), 0);
    const timespec wait{nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
    pollfd watched{process, POLLIN, 0};
    return ::ppoll(&watched, 1, &wait, nullptr) > 0;
}

pid_t start(const char* program) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(program, program, "--silent", nullptr);
        ::_exit(127);
    }
    return child;
}

/// Polls until `arrived` says yes; false when the uninstaller ends before.
template <typename Condition>
bool waitFor(int uninstaller, Condition arrived) {
    const auto deadline = Clock::now() + kPatience;
    while (!arrived()) {
        if (Clock::now() > deadline || endsBefore(uninstaller, Clock::now() + kPoll)) {
            return false;
        }
    }
    return true;
}

long since(Clock::time_point start) {
    return std::chrono::duration_cast<microseconds>(Clock::now() - start).count();
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 4) {
        return 2;
    }
    const std::string moment = argv[1];
    const microseconds delay(std::atol(argv[2]));
    const pid_t child = start(argv[3]);
    const int uninstaller = openProcess(child);
    int helper = -1;
    const bool seen = waitFor(uninstaller, [&helper] { return (helper = findHelper()) >= 0; });
    const auto origin = Clock::now();
    bool reached = seen;
    if (seen && (moment == "removal" || moment == "never")) {
        reached = waitFor(uninstaller, [] { return ::access(kFirstApplication, F_OK) != 0; });
    }
    const long removal = since(origin);
    if (moment == "never") {
        static_cast<void>(endsBefore(uninstaller, Clock::now() + kPatience));
        std::cout << "removal " << removal << " end " << since(origin) << std::endl;
    } else if (moment != "watch") {
        const bool late = !reached || endsBefore(uninstaller, Clock::now() + delay);
        const bool alive = seen && killProcess(helper);
        std::cout << (late || !alive ? "late" : "killed") << std::endl;
    }
    if (seen && moment != "never") {
        static_cast<void>(endsBefore(helper, Clock::now() + kPatience));
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    return 0;
}
