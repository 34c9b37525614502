// Process 1 of a simulated Mac.

#include <csignal>
#include <filesystem>
#include <iostream>

#include <fcntl.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Linux/Services/MacServices.h"
#include "launchd/MachineState.h"
#include "launchd/ServicesServer.h"
#include "launchd/SessionRunner.h"

namespace Simulator {

namespace {

constexpr int kCannotBoot = 70;

int cannotBoot(const std::string& why) {
    std::cerr << "macsim: the simulated Mac does not start: " << why << std::endl;
    return kCannotBoot;
}

Descriptor watchChildren() {
    // Signals that a process 1 does not handle do not end it; the terminal's are for the command.
    ::signal(SIGPIPE, SIG_IGN);
    sigset_t children;
    ::sigemptyset(&children);
    ::sigaddset(&children, SIGCHLD);
    ::sigprocmask(SIG_BLOCK, &children, nullptr);
    return Descriptor(::signalfd(-1, &children, SFD_CLOEXEC | SFD_NONBLOCK));
}

/// Sockets of an earlier boot mean nothing any more.
void clearRunFolders() {
    std::error_code ignored;
    const std::filesystem::path services(Platform::Linux::kMachServicesFolder);
    std::filesystem::remove_all(services, ignored);
    std::filesystem::create_directories(services, ignored);
    ::chmod(services.c_str(), 0755);
}

/// Uses up the little room that the fault disk-full leaves.
void fillRuntimeDisk() {
    const std::string path = std::string(kRuntimeFolder) + "/.full";
    const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    const std::string block(4096, 'x');
    while (::write(file.get(), block.data(), block.size()) > 0) {
    }
}

/// Tells `jobs` and `runner` of every process that has ended since the last call.
void reapChildren(int children, JobRegistry& jobs, SessionRunner& runner) {
    signalfd_siginfo ignored;
    static_cast<void>(::read(children, &ignored, sizeof ignored));
    int status = 0;
    for (pid_t pid = 0; (pid = ::waitpid(-1, &status, WNOHANG)) > 0;) {
        jobs.reaped(pid, status);
        runner.reaped(pid, status);
    }
}

int boot(const Machine& machine, const Session& session) {
    const Descriptor children = watchChildren();
    EventLoop loop;
    SystemLogFile log(loop);
    if (!log.open()) {
        return cannotBoot("the system log cannot be opened");
    }
    JobRegistry jobs(loop, log, machine, session);
    AdministratorDialog dialog(loop, log, machine, session);
    Authorizations authorizations(session.faults, dialog);
    const DistantNames distantNames(machine, jobs);
    LoadedExtensions extensions(session.faults);
    Blessing blessing(jobs, log, authorizations, session.faults);
    LaunchctlVerbs launchctl(loop, jobs, session.faults);
    Transcript transcript;
    if (!transcript.open()) {
        return cannotBoot("the transcript cannot be opened");
    }
    ServicesServer services(loop,
                            {authorizations, blessing, extensions, launchctl, distantNames, transcript});
    if (!services.open()) {
        return cannotBoot("the services socket cannot be opened");
    }
    for (const std::string& folder : machine.extensionFolders) {
        extensions.loadFrom(folder);
    }
    SessionRunner runner(loop, log, jobs, machine, session);
    loop.watch(children.get(), [&] { reapChildren(children.get(), jobs, runner); });
    jobs.boot();
    runner.start([&](int status) {
        log.drain();
        loop.stop(recordMachineState(jobs, extensions, distantNames, status)
                      ? status
                      : cannotBoot("its state cannot be recorded"));
    });
    return loop.run();
}

}  // namespace

}  // namespace Simulator

int main() {
    using namespace Simulator;
    if (::getpid() != 1) {
        std::cerr << "launchd: is process 1 of a simulated Mac; use macsim run\n";
        return kCannotBoot;
    }
    // Files get exactly the modes requested for them, and everybody may use the sockets.
    ::umask(022);
    const auto machineText = readFile(std::string(kMachineFile));
    const auto sessionText = readFile(std::string(kSessionFile));
    const auto machine = machineText ? decodeMachine(*machineText) : std::nullopt;
    const auto session = sessionText ? decodeSession(*sessionText) : std::nullopt;
    if (!machine || !session || session->command.empty()) {
        return cannotBoot("its description is missing or broken");
    }
    clearRunFolders();
    if (session->faults.contains("disk-full")) {
        fillRuntimeDisk();
    }
    return boot(*machine, *session);
}
