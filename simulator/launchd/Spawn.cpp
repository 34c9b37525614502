#include "launchd/Spawn.h"

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <grp.h>
#include <unistd.h>

#include "Platform/Linux/Services/MacServices.h"
#include "Support/Files.h"
#include "Support/Machine.h"

namespace Simulator {

namespace {

constexpr int kOutOfTheWay = 512;

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

void resetSignals() {
    for (int signal = 1; signal < NSIG; ++signal) {
        ::signal(signal, SIG_DFL);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

bool becomeUser(std::uint32_t uid, bool administrator) {
    if (uid == 0) {
        return true;
    }
    const std::array<gid_t, 2> groups{kStaffGroup, kAdminGroup};
    return ::setgroups(administrator ? 2 : 1, groups.data()) == 0 && ::setgid(kStaffGroup) == 0 &&
           ::setuid(uid) == 0;
}

/// Puts the descriptors where the program expects them and closes every other one but `report`.
int placeDescriptors(const SpawnRequest& request, int report) {
    if (!request.attached) {
        const int null = ::open("/dev/null", O_RDWR);
        for (int fd = 0; fd < 3; ++fd) {
            ::dup2(null, fd);
        }
    }
    std::vector<int> sources;
    for (const int service : request.services) {
        sources.push_back(::fcntl(service, F_DUPFD_CLOEXEC, kOutOfTheWay));
    }
    report = ::fcntl(report, F_DUPFD_CLOEXEC, kOutOfTheWay);
    int next = Platform::Linux::kFirstServiceDescriptor;
    for (const int source : sources) {
        ::dup2(source, next++);
    }
    ::close_range(static_cast<unsigned>(next), kOutOfTheWay - 1, 0);
    return report;
}

[[noreturn]] void runChild(const SpawnRequest& request, int report) {
    report = placeDescriptors(request, report);
    if (!request.attached) {
        ::setsid();
    }
    std::vector<std::string> arguments = request.arguments;
    std::vector<std::string> environment;
    for (const auto& [name, value] : request.environment) {
        environment.push_back(name + "=" + value);
    }
    const std::vector<char*> environmentPointers = pointersTo(environment);
    if (becomeUser(request.uid, request.administrator)) {
        if (request.workingDirectory.empty() || ::chdir(request.workingDirectory.c_str()) != 0) {
            static_cast<void>(::chdir("/"));
        }
        resetSignals();
        if (request.search) {
            const auto path = request.environment.find("PATH");
            ::setenv("PATH", path == request.environment.end() ? "/usr/bin" : path->second.c_str(), 1);
            ::execvpe(request.program.c_str(), pointersTo(arguments).data(), environmentPointers.data());
        } else {
            ::execve(request.program.c_str(), pointersTo(arguments).data(), environmentPointers.data());
        }
    }
    const int error = errno;
    static_cast<void>(::write(report, &error, sizeof error));
    ::_exit(127);
}

}  // namespace

std::optional<pid_t> spawn(const SpawnRequest& request, int& error) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        error = errno;
        return std::nullopt;
    }
    const Descriptor input(ends[0]);
    Descriptor output(ends[1]);
    const pid_t child = ::fork();
    if (child == 0) {
        runChild(request, output.get());
    }
    error = errno;
    output.reset();
    if (child < 0) {
        return std::nullopt;
    }
    // Ends without a byte once the program has taken over.
    ssize_t count = 0;
    do {
        count = ::read(input.get(), &error, sizeof error);
    } while (count < 0 && errno == EINTR);
    // The failed child is reaped like any other.
    return count == 0 ? std::optional(child) : std::nullopt;
}

std::map<std::string, std::string> userEnvironment(const std::string& name, std::uint32_t uid) {
    return {{"HOME", uid == 0 ? "/var/root" : "/Users/" + name},
            {"USER", name},
            {"LOGNAME", name},
            {"SHELL", "/bin/sh"},
            {"PATH", "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin"},
            {"TMPDIR", "/tmp"}};
}

}  // namespace Simulator
