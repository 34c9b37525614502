#include "Platform/Posix/PosixTaskRunner.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Base/FatalError.h"
#include "Platform/Posix/Descriptor.h"
#include "Platform/Posix/NativeSpawn.h"

extern char** environ;

namespace Platform::Posix {

namespace {

constexpr std::int32_t kStatusLost = 255;

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

/// Moves a descriptor away from the numbers of the standard ones, which may be closed in this process.
Descriptor aboveStandardOnes(int descriptor) {
    Descriptor original(descriptor);
    if (descriptor < 0 || descriptor > STDERR_FILENO) {
        return original;
    }
    return Descriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

bool openPipe(Pipe& pipe) {
    int ends[2] = {-1, -1};
    if (makePrivatePipe(ends) != 0) {
        return false;
    }
    pipe.readEnd = aboveStandardOnes(ends[0]);
    pipe.writeEnd = aboveStandardOnes(ends[1]);
    return pipe.readEnd && pipe.writeEnd;
}

std::string readToEnd(Descriptor& source) {
    std::string result;
    std::array<char, 4096> buffer;
    while (source) {
        const ssize_t count = ::read(source.get(), buffer.data(), buffer.size());
        if (count > 0) {
            result.append(buffer.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            source.reset(-1);
        }
    }
    return result;
}

class SpawnedTask final : public Task {
  public:
    SpawnedTask(pid_t child, Descriptor output, Descriptor error)
        : child_(child), output_(std::move(output)), error_(std::move(error)) {}

    ~SpawnedTask() override {
        output_.reset(-1);
        error_.reset(-1);
        wait(0);
    }

    void waitUntilExit() override { wait(0); }
    bool isRunning() override {
        wait(WNOHANG);
        return !ended_;
    }
    void kill() override;
    std::string readOutputToEnd() override { return readToEnd(output_); }
    std::string readErrorToEnd() override { return readToEnd(error_); }
    std::int32_t terminationStatus() const override {
        requireEnded();
        return status_;
    }
    TerminationReason terminationReason() const override {
        requireEnded();
        return reason_;
    }

  private:
    void wait(int options);
    void requireEnded() const {
        if (!ended_) {
            Base::fatalError("The status of a child process was asked for before it had been waited for.");
        }
    }

    const pid_t child_;
    Descriptor output_;
    Descriptor error_;
    bool ended_ = false;
    std::int32_t status_ = kStatusLost;
    TerminationReason reason_ = TerminationReason::exit;
};

void SpawnedTask::kill() {
    // Until the child has been waited for, its id cannot belong to another process.
    if (!ended_) {
        ::kill(child_, SIGKILL);
    }
    wait(0);
}

void SpawnedTask::wait(int options) {
    while (!ended_) {
        int status = 0;
        const pid_t result = ::waitpid(child_, &status, options);
        if (result == 0) {
            return;
        }
        if (result == child_) {
            const bool signalled = WIFSIGNALED(status);
            reason_ = signalled ? TerminationReason::uncaughtSignal : TerminationReason::exit;
            status_ = signalled ? WTERMSIG(status) : WEXITSTATUS(status);
        }
        ended_ = result == child_ || errno != EINTR;
    }
}

/// posix_spawn's two parameter objects, with their lifetimes.
class SpawnParameters {
  public:
    SpawnParameters() {
        ready_ = ::posix_spawnattr_init(&attributes) == 0 && ::posix_spawn_file_actions_init(&actions) == 0;
    }
    SpawnParameters(const SpawnParameters&) = delete;
    SpawnParameters& operator=(const SpawnParameters&) = delete;
    ~SpawnParameters() {
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&actions);
    }

    [[nodiscard]] bool set(int output, int error);

    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_t actions{};

  private:
    bool ready_ = false;
};

bool SpawnParameters::set(int output, int error) {
    sigset_t none;
    sigset_t defaults;
    // Macros on macOS, so they cannot be qualified.
    sigemptyset(&none);
    sigfillset(&defaults);
    sigdelset(&defaults, SIGKILL);
    sigdelset(&defaults, SIGSTOP);
    short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    return ready_ && ::posix_spawnattr_setsigmask(&attributes, &none) == 0 &&
           ::posix_spawnattr_setsigdefault(&attributes, &defaults) == 0 &&
           ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO) == 0 &&
           ::posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO) == 0 &&
           closeOtherDescriptors(actions, flags) == 0 && ::posix_spawnattr_setflags(&attributes, flags) == 0;
}

bool hasNul(const std::string& text) {
    return text.find('\0') != std::string::npos;
}

/// posix_spawn takes the arguments as pointers to characters that it does not change. Empty if one of them
/// cannot be passed.
std::vector<char*> argumentVector(const std::string& path,
                                  const std::optional<std::vector<std::string>>& arguments) {
    std::vector<char*> result{const_cast<char*>(path.c_str())};
    if (arguments) {
        for (const std::string& each : *arguments) {
            if (hasNul(each)) {
                return {};
            }
            result.push_back(const_cast<char*>(each.c_str()));
        }
    }
    result.push_back(nullptr);
    return result;
}

}  // namespace

std::unique_ptr<Task> PosixTaskRunner::launch(const std::string& path,
                                              const std::optional<std::vector<std::string>>& arguments) {
    if (!path.starts_with('/') || hasNul(path)) {
        return nullptr;
    }
    const std::vector<char*> argv = argumentVector(path, arguments);
    Pipe output;
    Pipe error;
    SpawnParameters parameters;
    if (argv.empty() || !openPipe(output) || !openPipe(error) ||
        !parameters.set(output.writeEnd.get(), error.writeEnd.get())) {
        return nullptr;
    }
    pid_t child = -1;
    if (::posix_spawn(&child, path.c_str(), &parameters.actions, &parameters.attributes, argv.data(),
                      environ) != 0) {
        return nullptr;
    }
    return std::make_unique<SpawnedTask>(child, std::move(output.readEnd), std::move(error.readEnd));
}

}  // namespace Platform::Posix
