#include "launchd/SessionRunner.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

#include <sys/wait.h>

#include "launchd/Caller.h"
#include "launchd/Spawn.h"

namespace Simulator {

namespace {

using namespace std::chrono_literals;

constexpr auto kPoll = 20ms;

/// A job that had itself booted out leaves the tool behind that it asked with: gone in a moment, and not part
/// of the end state.
bool launchctlRuns() {
    const std::vector<pid_t> processes = allProcesses();
    return std::any_of(processes.begin(), processes.end(),
                       [](pid_t pid) { return executableOfProcess(pid) == "/bin/launchctl"; });
}

}  // namespace

SessionRunner::SessionRunner(EventLoop& loop, SystemLogFile& log, const JobRegistry& jobs,
                             const Machine& machine, const Session& session)
    : loop_(loop), log_(log), jobs_(jobs), machine_(machine), session_(session) {}

void SessionRunner::start(std::function<void(int)> settled) {
    settled_ = std::move(settled);
    startPrograms();
    startCommand();
}

void SessionRunner::startPrograms() {
    for (const RunningProgram& program : machine_.running) {
        SpawnRequest request;
        request.program = program.path;
        request.arguments = {program.path};
        request.uid = program.uid;
        std::string name = "root";
        for (const User& user : machine_.users) {
            if (user.uid == program.uid) {
                name = user.name;
                request.administrator = user.administrator;
            }
        }
        request.environment = userEnvironment(name, program.uid);
        int error = 0;
        std::error_code ignored;
        if (std::filesystem::exists(program.path, ignored) && !spawn(request, error)) {
            log_.write("Cannot start " + program.path + ": " + std::strerror(error));
        }
    }
}

void SessionRunner::startCommand() {
    const User user = machine_.user(session_.user).value_or(User{"root", 0, false});
    SpawnRequest request;
    request.program = session_.command.front();
    request.arguments = session_.command;
    request.uid = user.uid;
    request.administrator = user.administrator;
    request.environment = userEnvironment(user.name, user.uid);
    request.environment.insert(session_.environment.begin(), session_.environment.end());
    request.attached = true;
    request.search = true;
    int error = 0;
    command_ = spawn(request, error);
    if (!command_) {
        std::cerr << "macsim: " << request.program << ": " << std::strerror(error) << std::endl;
        settleLater(error == ENOENT ? 127 : 126, 0);
    }
}

void SessionRunner::reaped(pid_t pid, int status) {
    if (pid == command_) {
        command_.reset();
        settleLater(WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), 0);
    }
}

void SessionRunner::settleLater(int status, int polls) {
    // Never at once: the command's last message to a service may not have started its job yet.
    loop_.after(kPoll, [this, status, polls] {
        const std::vector<std::string> jobs = jobs_.runningOnDemandJobs();
        const bool isOver = jobs.empty() && !launchctlRuns();
        if (!isOver && polls * kPoll < std::chrono::seconds(session_.wait)) {
            settleLater(status, polls + 1);
            return;
        }
        for (const std::string& label : jobs) {
            std::cerr << "macsim: " << label << " still runs " << session_.wait
                      << " s after the command and is cut off; --wait SECONDS gives it longer" << std::endl;
        }
        settled_(status);
    });
}

}  // namespace Simulator
