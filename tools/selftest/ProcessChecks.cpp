// The process table, child processes and users, through the ports.

#include <pwd.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

#include "Check.h"
#include "Folder.h"
#include "InstallCommon/CommandSuitsProvider.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "Platform/SystemPorts.h"

namespace Selftest {

namespace {

using Platform::PidListType;
using Platform::SystemPorts;

/// How much of a name libproc tells: the kernel keeps no more.
constexpr std::size_t kToldBytes = 31;

Platform::ProcessTable& processes() {
    return SystemPorts::current().processes;
}

/// The system answers in bytes where it is libproc: so the buffer has room for everybody.
std::vector<std::int32_t> listed(PidListType type, std::uint32_t user) {
    const int count = processes().listPids(type, user, {});
    std::vector<std::int32_t> pids(count > 0 ? static_cast<std::size_t>(count) : 0, 0);
    const int written = pids.empty() ? 0 : processes().listPids(type, user, pids);
    return written > 0 ? pids : std::vector<std::int32_t>();
}

bool contains(const std::vector<std::int32_t>& pids, std::int32_t pid) {
    return std::find(pids.begin(), pids.end(), pid) != pids.end();
}

std::string nameOf(std::int32_t pid) {
    std::array<char, 4096> name{};
    const int length = processes().name(pid, name);
    return {name.data(), static_cast<std::size_t>(std::max(length, 0))};
}

std::string pathOf(std::int32_t pid) {
    std::array<char, 4096> path{};
    const int length = processes().path(pid, path);
    return {path.data(), static_cast<std::size_t>(std::max(length, 0))};
}

Outcome checkList() {
    const std::vector<std::int32_t> all = listed(PidListType::all, 0);
    if (!contains(all, 1) || !contains(all, ::getpid())) {
        return failed("process 1 or this process is not listed");
    }
    const std::vector<std::int32_t> own = listed(PidListType::effectiveUser, ::geteuid());
    if (!contains(own, ::getpid())) {
        return failed("this process is not listed for its user");
    }
    if (::geteuid() != 0 && contains(own, 1)) {
        return failed("process 1 is listed for this user");
    }
    const auto count = std::count_if(all.begin(), all.end(), [](std::int32_t pid) { return pid > 0; });
    return passed(std::to_string(count) + " processes");
}

Outcome checkSelf() {
    std::uint32_t user = 0xFFFFFFFF;
    if (processes().effectiveUser(::getpid(), user) <= 0 || user != ::geteuid()) {
        return failed("this process belongs to user " + std::to_string(user));
    }
    const std::string path = pathOf(::getpid());
    if (path.empty() || path.front() != '/') {
        return failed("this process has the path \"" + path + "\"");
    }
    const std::string file = path.substr(path.rfind('/') + 1);
    return nameOf(::getpid()) == file.substr(0, nameOf(::getpid()).size()) && !nameOf(::getpid()).empty()
               ? passed(path)
               : failed("this process is called \"" + nameOf(::getpid()) + "\"");
}

/// The names that the commands look for, against what the system tells of a name.
Outcome checkLongestName() {
    std::size_t longest = 0;
    for (const auto& command : InstallCommon::CommandSuitsProvider::makeUninstallCommands()) {
        if (const auto* kill = dynamic_cast<const InstallCommon::KillProcessCommand*>(command.get())) {
            longest = std::max(longest, kill->process().size());
        }
    }
    return longest > 0 && longest <= kToldBytes
               ? passed("the longest has " + std::to_string(longest) + " bytes; the system tells " +
                        std::to_string(kToldBytes))
               : failed("a command looks for a name of " + std::to_string(longest) + " bytes");
}

Outcome checkChild() {
    const auto task =
        SystemPorts::current().tasks->launch("/bin/sh", std::vector<std::string>{"-c", "echo out; exit 3"});
    if (task == nullptr) {
        return failed("/bin/sh cannot be started");
    }
    task->waitUntilExit();
    const std::string output = task->readOutputToEnd();
    return output == "out\n" && task->terminationStatus() == 3
               ? passed()
               : failed("status " + std::to_string(task->terminationStatus()) + ", output \"" + output +
                        "\"");
}

Outcome checkAbsentProgram() {
    return SystemPorts::current().tasks->launch("/nothing/here", std::nullopt) == nullptr
               ? passed()
               : failed("a program that is not there was started");
}

/// The process that runs `program`; 0 when there is none within 20 seconds.
std::int32_t pidOf(const std::string& program) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < end) {
        for (const std::int32_t pid : listed(PidListType::effectiveUser, ::geteuid())) {
            if (pid > 0 && pathOf(pid) == program) {
                return pid;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return 0;
}

/// Of a copy of this program under a name that is longer than the kernel keeps.
Outcome checkLongNameAndKill() {
    const Folder folder;
    const std::string name = "sentrel-selftest-under-a-rather-long-name";
    const auto error =
        SystemPorts::current().files->copyItem(Base::URL::fileURL(pathOf(::getpid())), folder.url(name));
    if (error) {
        return failed("this program cannot be copied: " + error->description);
    }
    const auto task =
        SystemPorts::current().tasks->launch(folder.path(name), std::vector<std::string>{"--wait"});
    if (task == nullptr) {
        return failed("a copy of this program cannot be started");
    }
    const std::int32_t child = pidOf(folder.path(name));
    if (child == 0) {
        task->kill();
        return failed("the copy is not found by its path");
    }
    const std::string told = nameOf(child);
    if (processes().kill(child, SIGTERM) != 0) {
        return failed("the copy cannot be sent a signal");
    }
    task->waitUntilExit();
    if (task->terminationReason() != Platform::TerminationReason::uncaughtSignal ||
        task->terminationStatus() != SIGTERM) {
        return failed("the copy ended otherwise: " + std::to_string(task->terminationStatus()));
    }
    return told.size() >= kToldBytes && name.starts_with(told)
               ? passed("of a name of " + std::to_string(name.size()) + " bytes the system tells " +
                        std::to_string(told.size()))
               : failed("of the name " + name + " the system tells \"" + told + "\"");
}

Outcome checkUsers() {
    Platform::Users& users = SystemPorts::current().users;
    const passwd* const own = ::getpwuid(::getuid());
    const std::string home = own != nullptr ? own->pw_dir : "";
    users.rewind();
    bool hasRoot = false;
    bool hasOwn = false;
    int count = 0;
    while (const std::optional<Platform::Users::Entry> entry = users.next()) {
        hasRoot = hasRoot || (entry->uid == 0 && !entry->home.empty());
        hasOwn = hasOwn || (entry->uid == ::getuid() && entry->home == home);
        ++count;
    }
    users.close();
    if (!hasRoot || !hasOwn) {
        return failed("the walk over " + std::to_string(count) + " users misses " + (hasRoot ? "" : "root ") +
                      (hasOwn ? "" : "this user"));
    }
    return users.realUserId() == ::getuid() ? passed(std::to_string(count) + " users")
                                            : failed("another user id");
}

}  // namespace

Checks processChecks() {
    return {{"processes.list", checkList},
            {"processes.self", checkSelf},
            {"processes.longest-name", checkLongestName},
            {"processes.child", checkChild},
            {"processes.absent-program", checkAbsentProgram},
            {"processes.long-name-and-kill", checkLongNameAndKill},
            {"processes.users", checkUsers}};
}

}  // namespace Selftest
