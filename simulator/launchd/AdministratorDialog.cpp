#include "launchd/AdministratorDialog.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

#include <sys/socket.h>
#include <sys/wait.h>

#include "Platform/Linux/Services/MacServices.h"
#include "Support/Passwords.h"
#include "launchd/CodeIdentity.h"
#include "launchd/Spawn.h"

namespace Simulator {

namespace {

constexpr int kMaximumAnswers = 3;
constexpr std::size_t kLongestPrompt = 1000;

/// The name of the program for people: the application's, or else the executable's.
std::string nameOfProgram(pid_t pid) {
    const std::string executable = executableOfProcess(pid).value_or("");
    const std::string bundle = bundleOfExecutable(executable);
    return bundle.empty() ? std::filesystem::path(executable).filename().string()
                          : std::filesystem::path(bundle).stem().string();
}

}  // namespace

AdministratorDialog::AdministratorDialog(EventLoop& loop, SystemLogFile& log, const Machine& machine,
                                         const Session& session)
    : loop_(loop), log_(log), machine_(machine), session_(session) {}

bool AdministratorDialog::canAsk(const Caller& caller) const {
    const auto user = machine_.user(session_.user);
    return user && user->uid == caller.uid && session_.environment.contains("DISPLAY");
}

std::optional<pid_t> AdministratorDialog::startAgent(int socket) const {
    const User user = machine_.user(session_.user).value_or(User{});
    SpawnRequest request;
    request.program = kSecurityAgent;
    request.arguments = {kSecurityAgent};
    request.environment = userEnvironment(user.name, user.uid);
    request.environment.insert(session_.environment.begin(), session_.environment.end());
    request.uid = user.uid;
    request.administrator = user.administrator;
    request.services = {socket};
    int error = 0;
    const auto agent = spawn(request, error);
    if (!agent) {
        log_.write(std::string("Cannot start SecurityAgent: ") + std::strerror(error));
    }
    return agent;
}

void AdministratorDialog::open(const Caller& caller, const std::string& prompt, Done done) {
    int ends[2] = {-1, -1};
    static_cast<void>(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends));
    socket_ = Descriptor(ends[0]);
    const Descriptor theirs(ends[1]);
    done_ = std::move(done);
    isShown_ = false;
    wrongAnswers_ = 0;
    const auto user = machine_.user(session_.user);
    // The rest of the text is not much longer, so all of it fits into SecurityAgent's buffer.
    const std::string text =
        Platform::Linux::joinFields({nameOfProgram(caller.pid), prompt.substr(0, kLongestPrompt),
                                     user && user->administrator ? user->name : ""});
    agent_ = theirs.valid() ? startAgent(theirs.get()) : std::nullopt;
    if (!agent_ || ::send(socket_.get(), text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL) < 0) {
        failure_ = loop_.after(std::chrono::milliseconds(0),
                               [this] { finish(kAuthorizationInteractionNotAllowed); });
        return;
    }
    loop_.watch(socket_.get(), [this] { receive(); });
}

void AdministratorDialog::close() {
    if (agent_) {
        // Its window closes with its connection to the display.
        ::kill(*agent_, SIGKILL);
        // Gone before anybody is told: the answer may be the last thing that this Mac's command waits for.
        ::waitpid(*agent_, nullptr, 0);
        agent_.reset();
    }
    if (socket_.valid()) {
        loop_.unwatch(socket_.get());
        socket_.reset();
    }
    if (failure_) {
        loop_.cancel(*failure_);
        failure_.reset();
    }
    done_ = nullptr;
}

void AdministratorDialog::finish(std::int32_t status) {
    const Done done = std::move(done_);
    close();
    if (done) {
        done(status);
    }
}

void AdministratorDialog::receive() {
    std::array<char, 4096> buffer;
    const ssize_t length = ::recv(socket_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (length < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (length <= 0) {
        // The display could not be used, or somebody has ended SecurityAgent.
        finish(isShown_ ? kAuthorizationCanceled : kAuthorizationInteractionNotAllowed);
        return;
    }
    const std::vector<std::string> words =
        Platform::Linux::splitFields({buffer.data(), static_cast<std::size_t>(length)});
    if (words.size() == 1 && words[0] == "shown") {
        isShown_ = true;
    } else if (words.size() == 3 && words[0] == "answer") {
        answered(words[1], words[2]);
    } else {
        finish(kAuthorizationCanceled);
    }
}

void AdministratorDialog::answered(const std::string& name, const std::string& password) {
    const auto user = machine_.user(name);
    if (user && user->administrator && isPassword(password, user->passwordHash)) {
        finish(0);
        return;
    }
    log_.write("SecurityAgent: wrong name or password of an administrator");
    constexpr std::string_view kWrong = "wrong";
    if (++wrongAnswers_ == kMaximumAnswers) {
        finish(kAuthorizationDenied);
    } else if (::send(socket_.get(), kWrong.data(), kWrong.size(), MSG_DONTWAIT | MSG_NOSIGNAL) < 0) {
        finish(kAuthorizationCanceled);
    }
}

}  // namespace Simulator
