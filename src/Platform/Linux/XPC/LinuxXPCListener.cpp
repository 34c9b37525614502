#include "Platform/Linux/XPC/LinuxXPCListener.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <utility>

#include "Platform/Linux/XPC/LinuxXPCConnection.h"

namespace Platform::Linux {

/// Work under way: connections in use and transactions.
struct LinuxXPCListener::Activity {
    std::atomic<int> peers{0};
    std::atomic<int> transactions{0};
    std::atomic<bool> disregardsPeers{false};
    std::atomic<bool> isStopping{false};
    /// Readable when something has ended or one of the flags was set.
    Posix::Descriptor changed{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};

    [[nodiscard]] bool isIdle() const { return transactions == 0 && (peers == 0 || disregardsPeers); }
    [[nodiscard]] bool isOver() const { return isStopping && transactions == 0 && peers == 0; }

    void announce() const {
        const std::uint64_t one = 1;
        static_cast<void>(!::write(changed.get(), &one, sizeof one));
    }

    /// Counts one until the returned pointer and its copies are gone.
    static std::shared_ptr<void> count(const std::shared_ptr<Activity>& self,
                                       std::atomic<int> Activity::*counter) {
        ++(*self.*counter);
        return {self.get(), [self, counter](void*) {
                    --(*self.*counter);
                    self->announce();
                }};
    }
};

int pollTimeout(std::uint32_t seconds) {
    constexpr std::uint64_t kMillisecondsPerSecond = 1000;
    constexpr std::uint64_t kLongest = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(seconds * kMillisecondsPerSecond, kLongest));
}

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
    return Activity::count(activity_, &Activity::transactions);
}

void LinuxXPCListener::disregardPeers() {
    activity_->disregardsPeers = true;
    activity_->announce();
}

void LinuxXPCListener::stop() {
    activity_->isStopping = true;
    disregardPeers();
}

void LinuxXPCListener::run(const Accept& accept, const Refused& refused, std::uint32_t idleSeconds) {
    constexpr int kForever = -1;
    const int idleTime = pollTimeout(idleSeconds);
    for (;;) {
        std::array<pollfd, 2> polled{pollfd{socket_.get(), POLLIN, 0},
                                     pollfd{activity_->changed.get(), POLLIN, 0}};
        // From now on new peers stay in the socket's queue, which process 1 shares.
        const int patience = activity_->isOver() ? 0 : activity_->isIdle() ? idleTime : kForever;
        const int ready = ::poll(polled.data(), polled.size(), patience);
        if (ready == 0 && activity_->isIdle()) {
            return;
        }
        if (polled[1].revents != 0) {
            std::uint64_t changes = 0;
            static_cast<void>(!::read(activity_->changed.get(), &changes, sizeof changes));
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
    if (activity_->peers >= kMostConnections) {
        refused(name + ": too many are connected already");
        return;
    }
    auto connection = std::make_shared<LinuxXPCConnection>(
        std::move(socket), Activity::count(activity_, &Activity::peers),
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
