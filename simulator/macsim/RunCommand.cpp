#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include "macsim/Commands.h"
#include "macsim/Display.h"
#include "macsim/MacRun.h"
#include "macsim/Preferences.h"
#include "macsim/ProductLayout.h"
#include "macsim/Refusal.h"
#include "macsim/Sandbox.h"

namespace Simulator {

namespace {

/// Environment of the host that describes the terminal or the build, not the host.
constexpr const char* kPassedOn[] = {"TERM",         "LANG",          "LC_ALL",       "COLUMNS",     "LINES",
                                     "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS"};

/// Keeps an item of a Mac immutable while it lives.
class ImmutableItem {
  public:
    ImmutableItem(const MacRoot& mac, const std::string& path)
        : item_(mac.open(path, O_RDONLY | O_NONBLOCK)) {
        if (!item_.valid()) {
            throw Refusal("cannot make " + path + " immutable: " + std::strerror(errno));
        }
        if (!set(true)) {
            throw Refusal("cannot make " + path + " immutable: " + std::strerror(errno) +
                          " (needs root and a file system with that flag)");
        }
    }
    ImmutableItem(ImmutableItem&&) = default;
    ~ImmutableItem() {
        if (item_.valid()) {
            static_cast<void>(set(false));
        }
    }

  private:
    [[nodiscard]] bool set(bool immutable) const {
        int flags = 0;
        if (::ioctl(item_.get(), FS_IOC_GETFLAGS, &flags) != 0) {
            return false;
        }
        flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
        return ::ioctl(item_.get(), FS_IOC_SETFLAGS, &flags) == 0;
    }

    Descriptor item_;
};

Session makeSession(const MacRoot& mac, const RunOptions& options) {
    const auto machine = decodeMachine(mac.read(kMachineFile).value_or(""));
    if (!machine) {
        throw Refusal(mac.folder() + " has a broken description (var/macsim/machine.json)");
    }
    const auto user = machine->user(options.user);
    if (!user) {
        throw Refusal("there is no user named '" + options.user + "'", Refusal::kMisuse);
    }
    if (!options.languages.empty()) {
        setLanguages(mac, *user, options.languages);
    }
    Session session;
    session.command = options.command;
    session.user = options.user;
    session.faults = options.faults;
    session.wait = options.wait;
    for (const char* name : kPassedOn) {
        if (const char* value = std::getenv(name); value != nullptr) {
            session.environment[name] = value;
        }
    }
    mac.remove(kDisplayCookieFile);
    if (!options.display.empty()) {
        useDisplay(mac, *user, options.display, session);
    }
    return session;
}

/// Starts the sandbox and waits for its end; passes a request to end on to it.
int runSandbox(const std::vector<std::string>& command) {
    sigset_t handled;
    ::sigemptyset(&handled);
    for (const int signal : {SIGCHLD, SIGTERM, SIGHUP}) {
        ::sigaddset(&handled, signal);
    }
    sigset_t before;
    ::sigprocmask(SIG_BLOCK, &handled, &before);
    // Input from the terminal is for the command alone.
    ::signal(SIGINT, SIG_IGN);
    ::signal(SIGQUIT, SIG_IGN);
    const pid_t child = ::fork();
    if (child == 0) {
        ::sigprocmask(SIG_SETMASK, &before, nullptr);
        execSandbox(command);
    }
    if (child < 0) {
        throw Refusal(std::string("cannot start a process: ") + std::strerror(errno));
    }
    int ended = 0;
    for (;;) {
        const int signal = ::sigwaitinfo(&handled, nullptr);
        if (signal == SIGTERM || signal == SIGHUP) {
            ended = 128 + signal;
            ::kill(child, SIGKILL);
        }
        int status = 0;
        if (::waitpid(child, &status, WNOHANG) == child) {
            return ended != 0 ? ended : WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
        }
    }
}

void addProductPaths(const MacRoot& mac) {
    auto state = nlohmann::json::parse(mac.read(kStateFile).value_or(""), nullptr, false);
    if (!state.is_object()) {
        throw Refusal("the simulated Mac did not come up");
    }
    state["productPaths"] = nlohmann::json::array();
    for (const std::string& path : productPaths()) {
        if (mac.exists(path)) {
            state["productPaths"].push_back(path);
        }
    }
    if (!mac.write(kStateFile, state.dump(2) + "\n", 0644)) {
        throw Refusal("cannot record the state of " + mac.folder());
    }
}

}  // namespace

Descriptor lockMac(const MacRoot& mac) {
    Descriptor lock = mac.open(kLockFile, O_RDWR | O_CREAT, 0600);
    if (!lock.valid() || ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        throw Refusal(errno == EWOULDBLOCK ? mac.folder() + " is running already"
                                           : "cannot lock " + mac.folder() + ": " + std::strerror(errno));
    }
    return lock;
}

int runMac(const RunOptions& options) {
    const MacRoot mac(options.folder);
    const Descriptor lock = lockMac(mac);
    return runLocked(mac, options);
}

int runLocked(const MacRoot& mac, const RunOptions& options) {
    const Session session = makeSession(mac, options);
    if (!mac.write(kSessionFile, encode(session), 0600)) {
        throw Refusal("cannot write into " + mac.folder() + ": " + std::strerror(errno));
    }
    std::optional<ImmutableItem> immutable;
    if (const auto path = faultValue(session.faults, "immutable")) {
        immutable.emplace(mac, *path);
    }
    mac.remove(kStateFile);
    const int status = runSandbox(sandboxCommand(mac.folder(), session));
    if (mac.exists(kStateFile)) {
        addProductPaths(mac);
        return status;
    }
    if (status == kNoSandbox) {
        throw Refusal("bwrap cannot be started (package bubblewrap)");
    }
    if (status > 128) {
        return status;
    }
    throw Refusal("the simulated Mac did not come up");
}

}  // namespace Simulator
