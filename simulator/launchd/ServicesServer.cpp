#include "launchd/ServicesServer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <span>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "Base/WholeNumber.h"
#include "Platform/Linux/Services/MacServices.h"
#include "launchd/CodeIdentity.h"

namespace Simulator {

namespace {

constexpr std::size_t kMaximumConnections = 256;

/// Joins fields; the longest is cut if they do not fit into one packet.
std::string join(std::vector<std::string> fields) {
    std::size_t total = fields.size();
    std::string* longest = &fields.front();
    for (std::string& field : fields) {
        total += field.size();
        longest = field.size() > longest->size() ? &field : longest;
    }
    if (total > Platform::Linux::kMaximumPacket) {
        longest->resize(longest->size() - std::min(longest->size(), total - Platform::Linux::kMaximumPacket));
    }
    return Platform::Linux::joinFields(fields);
}

}  // namespace

bool ServicesServer::open() {
    listener_ = Descriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path(Platform::Linux::kServicesSocket);
    std::memcpy(address.sun_path, path.data(), path.size());
    ::unlink(path.c_str());
    if (!listener_.valid() ||
        ::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::chmod(path.c_str(), 0666) != 0 || ::listen(listener_.get(), SOMAXCONN) != 0) {
        return false;
    }
    loop_.watch(listener_.get(), [this] { accept(); });
    return true;
}

void ServicesServer::accept() {
    Descriptor socket(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    ucred sender{};
    socklen_t length = sizeof sender;
    if (!socket.valid() || ::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &sender, &length) != 0) {
        return;
    }
    if (connections_.size() >= kMaximumConnections) {
        // A process opens connections and abandons them: the oldest goes.
        close(connections_.begin()->first);
    }
    const ConnectionId id = next_++;
    loop_.watch(socket.get(), [this, id] { receive(id); });
    connections_[id] = {std::move(socket), {sender.pid, sender.uid}};
}

void ServicesServer::close(ConnectionId id) {
    const auto found = connections_.find(id);
    if (found != connections_.end()) {
        loop_.unwatch(found->second.socket.get());
        connections_.erase(found);
        services_.authorizations.abandon(id);
    }
}

void ServicesServer::receive(ConnectionId id) {
    static std::array<char, Platform::Linux::kMaximumPacket> buffer;
    const auto found = connections_.find(id);
    if (found == connections_.end()) {
        return;
    }
    const ssize_t length =
        ::recv(found->second.socket.get(), buffer.data(), buffer.size(), MSG_DONTWAIT | MSG_TRUNC);
    if (length < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (length <= 0 || static_cast<std::size_t>(length) > buffer.size()) {
        close(id);
        return;
    }
    const Caller caller = found->second.caller;
    if (!handle(id, caller,
                Platform::Linux::splitFields({buffer.data(), static_cast<std::size_t>(length)}))) {
        close(id);
    }
}

bool ServicesServer::handle(ConnectionId id, const Caller& caller, const Fields& request) {
    const std::string& verb = request.front();
    if (verb == "authorize" && request.size() >= 2) {
        return authorize(id, caller, request);
    }
    if (verb == "bless" && request.size() == 3) {
        services_.blessing.bless(caller, request[1], request[2],
                                 [this, id](int code, const std::string& text) {
                                     reply(id, {std::to_string(code), text});
                                 });
        return true;
    }
    if (verb == "executed" || verb == "launchctl") {
        record(id, caller, request);
        return true;
    }
    return request.size() == 2 && handleWord(id, caller, verb, request[1]);
}

bool ServicesServer::handleWord(ConnectionId id, const Caller& caller, const std::string& verb,
                                const std::string& word) {
    if (verb == "release") {
        services_.authorizations.release(word, caller);
        reply(id, {"0"});
    } else if (verb == "unload-kext") {
        reply(id, {std::to_string(services_.extensions.unload(caller, word))});
    } else if (verb == "is-kext-loaded") {
        reply(id, {services_.extensions.identifiers().contains(word) ? "1" : "0"});
    } else if (verb == "identify") {
        identify(id, word);
    } else if (verb == "lookup") {
        lookUp(id, word);
    } else {
        return false;
    }
    return true;
}

void ServicesServer::record(ConnectionId id, const Caller& caller, const Fields& request) {
    const Fields arguments(request.begin() + 1, request.end());
    services_.transcript.record(caller, arguments);
    if (request.front() == "executed") {
        reply(id, {"0"});
        return;
    }
    services_.launchctl.run(caller, arguments, [this, id](const LaunchctlReply& result) {
        reply(id, {std::to_string(result.status), result.out, result.err});
    });
}

bool ServicesServer::authorize(ConnectionId id, const Caller& caller, const Fields& request) {
    AuthorizationRequest wanted;
    wanted.flags = Base::wholeNumber<std::uint32_t>(request[1]).value_or(0);
    const auto end = std::find(request.begin() + 2, request.end(), "");
    wanted.rights.assign(request.begin() + 2, end);
    if (end != request.end()) {
        const std::span<const std::string> items(end + 1, request.end());
        if (items.size() % 2 != 0) {
            return false;
        }
        for (std::size_t index = 0; index < items.size(); index += 2) {
            wanted.prompt = items[index] == "prompt" ? items[index + 1] : wanted.prompt;
        }
    }
    services_.authorizations.authorize(id, caller, wanted,
                                       [this, id](std::int32_t status, const std::string& token) {
                                           reply(id, {std::to_string(status), token});
                                       });
    return true;
}

void ServicesServer::identify(ConnectionId id, const std::string& process) {
    const auto identifier = codeIdentifier(Base::wholeNumber<pid_t>(process).value_or(0));
    reply(id, {identifier ? "0" : "1", identifier.value_or("")});
}

void ServicesServer::lookUp(ConnectionId id, const std::string& name) {
    if (const auto owner = services_.distantNames.owner(name)) {
        reply(id, {"0", std::to_string(owner->pid), std::to_string(owner->start)});
    } else {
        reply(id, {"1", "", ""});
    }
}

void ServicesServer::reply(ConnectionId id, const Fields& fields) {
    const auto found = connections_.find(id);
    if (found == connections_.end()) {
        return;
    }
    const std::string packet = join(fields);
    if (::send(found->second.socket.get(), packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL) < 0) {
        close(id);
    }
}

}  // namespace Simulator
