#include "Platform/Linux/LinuxXPCListener.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <utility>

#include "Platform/Linux/LinuxXPCConnection.h"

namespace Platform::Linux {

/// How much is under way: connections in use and transactions.
struct LinuxXPCListener::Activity {
    std::atomic<int> count{0};
    std::atomic<int> connections{0};
    Posix::Descriptor ended{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};

    void finishOne() {
        --count;
        const std::uint64_t one = 1;
        static_cast<void>(!::write(ended.get(), &one, sizeof one));
    }
};

LinuxXPCListener::LinuxXPCListener(Posix::Descriptor socket, std::vector<std::string> clientRequirements,
                                   Identify identify)
    : socket_(std::move(socket)),
      clientRequirements_(std::move(clientRequirements)),
      identify_(std::move(identify)),
      activity_(std::make_shared<Activity>()) {
    ::fcntl(socket_.get(), F_SETFD, FD_CLOEXEC);
    ::fcntl(socket_.get(), F_SETFL, O_NONBLOCK);
}

std::shared_ptr<void> LinuxXPCListener::transaction() {
    ++activity_->count;
    return {activity_.get(), [activity = activity_](void*) { activity->finishOne(); }};
}

std::shared_ptr<void> LinuxXPCListener::connectionInUse() {
    ++activity_->connections;
    return {activity_.get(),
            [activity = activity_, work = transaction()](void*) { --activity->connections; }};
}

void LinuxXPCListener::run(const Accept& accept, const Refused& refused, std::uint32_t idleSeconds) {
    constexpr int kForever = -1;
    constexpr int kMillisecondsPerSecond = 1000;
    const int idleTime = static_cast<int>(idleSeconds) * kMillisecondsPerSecond;
    for (;;) {
        const bool isIdle = activity_->count == 0;
        std::array<pollfd, 2> polled{pollfd{socket_.get(), POLLIN, 0},
                                     pollfd{activity_->ended.get(), POLLIN, 0}};
        const int ready = ::poll(polled.data(), polled.size(), isIdle ? idleTime : kForever);
        if (ready == 0 && activity_->count == 0) {
            return;
        }
        if (polled[1].revents != 0) {
            std::uint64_t ended = 0;
            static_cast<void>(!::read(activity_->ended.get(), &ended, sizeof ended));
        }
        if (polled[0].revents != 0) {
            acceptOne(accept, refused);
        }
    }
}

void LinuxXPCListener::acceptOne(const Accept& accept, const Refused& refused) {
    Posix::Descriptor socket(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!socket) {
        return;
    }
    ucred credentials{};
    socklen_t size = sizeof credentials;
    if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
        refused("a peer without credentials");
        return;
    }
    const XPCPeer peer{credentials.pid, credentials.uid};
    const std::string name = "process " + std::to_string(peer.pid) + " of user " + std::to_string(peer.uid);
    if (const std::optional<std::string> why = refusalOf(peer)) {
        refused(name + ": " + *why);
        return;
    }
    if (activity_->connections >= kMostConnections) {
        refused(name + ": too many are connected already");
        return;
    }
    auto connection = std::make_shared<LinuxXPCConnection>(
        std::move(socket), connectionInUse(),
        [refused, name](const std::string& why) { refused(name + ": " + why); });
    if (!accept(connection, peer)) {
        refused(name + ": the service does not take it");
        return;
    }
    connection->resume();
}

std::optional<std::string> LinuxXPCListener::refusalOf(const XPCPeer& peer) const {
    const std::optional<std::string> identifier = identify_(peer.pid);
    if (!identifier) {
        return "its code has no identity that can be trusted";
    }
    const bool isAllowed = std::any_of(clientRequirements_.begin(), clientRequirements_.end(),
                                       [&identifier](const std::string& requirement) {
                                           return identifierOfRequirement(requirement) == identifier;
                                       });
    return isAllowed ? std::nullopt : std::optional("its identity is not an authorized client's");
}

std::optional<std::string> identifierOfRequirement(std::string_view requirement) {
    constexpr std::string_view kBefore = "identifier \"";
    const std::size_t start = requirement.find(kBefore);
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    requirement.remove_prefix(start + kBefore.size());
    const std::size_t end = requirement.find('"');
    return end == std::string_view::npos ? std::nullopt
                                         : std::optional(std::string(requirement.substr(0, end)));
}

}  // namespace Platform::Linux
