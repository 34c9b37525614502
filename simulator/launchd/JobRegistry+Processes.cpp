// The part of the job registry that deals with processes and mach services.

#include <cstring>
#include <filesystem>
#include <utility>

#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>

#include "Platform/Linux/Services/MacServices.h"
#include "launchd/JobRegistry.h"
#include "launchd/Spawn.h"

namespace Simulator {

namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kAfterCrash{1000};

/// A listening socket that everybody may connect to.
Descriptor listenAt(const std::string& path) {
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (!socket.valid() || path.size() >= sizeof address.sun_path) {
        return Descriptor();
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::chmod(path.c_str(), 0666) != 0 || ::listen(socket.get(), SOMAXCONN) != 0) {
        return Descriptor();
    }
    return socket;
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ":") + name;
    }
    return text;
}

std::string howItEnded(int status) {
    return WIFSIGNALED(status) ? "was ended by signal " + std::to_string(WTERMSIG(status))
                               : "exited with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

void JobRegistry::openServices(Job& job) {
    for (const std::string& name : job.definition.machServices) {
        if (name == kInstallerHelperLabel && session_.faults.contains("no-installer-service")) {
            continue;
        }
        const std::string path = std::string(Platform::Linux::kMachServicesFolder) + "/" + name;
        bool taken = false;
        for (const auto& [key, other] : jobs_) {
            for (const std::string& theirs : other->serviceNames) {
                taken = taken || theirs == name;
            }
        }
        Descriptor socket = taken ? Descriptor() : listenAt(path);
        if (!socket.valid()) {
            log_.write("Mach service " + name + " of job " + job.definition.label + " is not available");
            continue;
        }
        job.serviceNames.push_back(name);
        job.services.push_back(std::move(socket));
    }
    arm(job);
}

void JobRegistry::arm(Job& job) {
    for (const Descriptor& service : job.services) {
        loop_.watch(service.get(), [this, &job] { start(job); });
    }
}

void JobRegistry::disarm(Job& job) {
    for (const Descriptor& service : job.services) {
        loop_.unwatch(service.get());
    }
}

std::map<std::string, std::string> JobRegistry::environment(const Job& job) const {
    std::string user = "root";
    for (const User& candidate : machine_.users) {
        if (job.domain.uid == candidate.uid) {
            user = candidate.name;
        }
    }
    auto result = userEnvironment(user, owner(job.domain));
    result["PATH"] = "/usr/bin:/bin:/usr/sbin:/sbin";
    result["XPC_SERVICE_NAME"] = job.definition.label;
    for (const auto& [name, value] : session_.environment) {
        if (name.ends_with("SAN_OPTIONS")) {
            result[name] = value;
        }
    }
    result.insert(job.definition.environment.begin(), job.definition.environment.end());
    if (!job.services.empty()) {
        result[std::string(Platform::Linux::kServiceNamesVariable)] = joined(job.serviceNames);
    }
    const auto exitAfter = faultValue(session_.faults, "helper-exit-after");
    const auto pause = faultValue(session_.faults, "helper-pause");
    const bool mute = session_.faults.contains("helper-mute");
    if (job.definition.label == kInstallerHelperLabel && (exitAfter || pause || mute)) {
        result["LD_PRELOAD"] = std::string(kHelperFaultsLibrary);
        // A sanitized helper insists that its run-time is the first library.
        result["ASAN_OPTIONS"] +=
            (result["ASAN_OPTIONS"].empty() ? "" : ":") + std::string("verify_asan_link_order=0");
        if (exitAfter) {
            result["MACSIM_HELPER_EXIT_AFTER"] = *exitAfter;
        }
        if (pause) {
            result["MACSIM_HELPER_PAUSE"] = *pause;
        }
        if (mute) {
            result["MACSIM_HELPER_MUTE"] = "1";
        }
    }
    return result;
}

void JobRegistry::start(Job& job) {
    if (job.state != Job::State::waiting) {
        return;
    }
    disarm(job);
    if (job.timer) {
        loop_.cancel(*job.timer);
        job.timer.reset();
    }
    SpawnRequest request;
    request.program = job.definition.program;
    request.arguments = job.definition.arguments;
    request.environment = environment(job);
    request.workingDirectory = job.definition.workingDirectory;
    request.uid = owner(job.domain);
    for (const User& user : machine_.users) {
        request.administrator = request.administrator || (job.domain.uid == user.uid && user.administrator);
    }
    for (const Descriptor& service : job.services) {
        request.services.push_back(service.get());
    }
    job.started = steady_clock::now();
    int error = 0;
    job.pid = spawn(request, error);
    if (job.pid) {
        job.state = Job::State::running;
        return;
    }
    log_.write("Job " + job.definition.label + " cannot be started: " + request.program + ": " +
               std::strerror(error));
    if (job.onDemand()) {
        // Anybody who is waiting for the service learns that it will not come.
        startLater(job, std::chrono::seconds(job.definition.throttleInterval));
    }
}

void JobRegistry::startLater(Job& job, milliseconds delay) {
    job.timer = loop_.after(delay, [this, &job] {
        job.timer.reset();
        if (job.definition.keepAlive != KeepAlive::no) {
            start(job);
        } else {
            arm(job);
        }
    });
}

void JobRegistry::reaped(pid_t pid, int status) {
    for (const auto& [key, job] : jobs_) {
        if (job->pid == pid) {
            // Everything that the job has left behind in its session goes with it.
            ::kill(-pid, SIGKILL);
            ended(*job, status);
            return;
        }
    }
}

void JobRegistry::ended(Job& job, int status) {
    const bool asked = job.state == Job::State::stopping;
    const bool restart = std::exchange(job.restart, false);
    if (job.timer) {
        loop_.cancel(*job.timer);
        job.timer.reset();
    }
    job.pid.reset();
    job.state = Job::State::waiting;
    if (asked) {
        forget(job);
        return;
    }
    if (restart) {
        start(job);
        return;
    }
    if (status != 0) {
        log_.write("Job " + job.definition.label + " " + howItEnded(status));
    }
    const KeepAlive keep = job.definition.keepAlive;
    if (keep == KeepAlive::always ||
        keep == (status == 0 ? KeepAlive::afterSuccess : KeepAlive::afterFailure)) {
        const auto ran = duration_cast<milliseconds>(steady_clock::now() - job.started);
        const milliseconds throttle = std::chrono::seconds(job.definition.throttleInterval);
        startLater(job, std::max(throttle - ran, milliseconds(0)));
    } else if (status != 0 && job.onDemand()) {
        startLater(job, kAfterCrash);
    } else {
        arm(job);
    }
}

}  // namespace Simulator
