#include "Platform/Linux/Services/MacServices.h"

#include <cerrno>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Platform::Linux {

namespace {

/// A connection to the server; -1 if nobody listens.
int connectTo(const std::string& path) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) {
        return -1;
    }
    const int fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        return -1;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

std::optional<std::string> exchange(int fd, const std::string& packet) {
    ssize_t sent = 0;
    do {
        sent = ::send(fd, packet.data(), packet.size(), MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    if (sent < 0) {
        return std::nullopt;
    }
    std::string reply(kMaximumPacket, '\0');
    ssize_t received = 0;
    do {
        received = ::recv(fd, reply.data(), reply.size(), 0);
    } while (received < 0 && errno == EINTR);
    if (received <= 0) {
        return std::nullopt;
    }
    reply.resize(static_cast<std::size_t>(received));
    return reply;
}

}  // namespace

std::string joinFields(const std::vector<std::string>& fields) {
    std::string packet;
    for (std::size_t index = 0; index < fields.size(); ++index) {
        if (index > 0) {
            packet += '\0';
        }
        packet += fields[index];
    }
    return packet;
}

std::vector<std::string> splitFields(std::string_view packet) {
    std::vector<std::string> fields;
    for (;;) {
        const std::size_t end = packet.find('\0');
        fields.emplace_back(packet.substr(0, end));
        if (end == std::string_view::npos) {
            return fields;
        }
        packet.remove_prefix(end + 1);
    }
}

std::optional<std::vector<std::string>> MacServices::request(const std::vector<std::string>& fields) const {
    for (const std::string& field : fields) {
        if (field.find('\0') != std::string::npos) {
            return std::nullopt;
        }
    }
    const std::string packet = joinFields(fields);
    if (packet.empty() || packet.size() > kMaximumPacket) {
        return std::nullopt;
    }
    const int fd = connectTo(socket_);
    if (fd < 0) {
        return std::nullopt;
    }
    const auto reply = exchange(fd, packet);
    ::close(fd);
    return reply ? std::optional(splitFields(*reply)) : std::nullopt;
}

}  // namespace Platform::Linux
