#include "RawPeer.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstring>

#include "Platform/XPC.h"

namespace XPCTests {

using namespace Platform::Linux;

Platform::Posix::Descriptor connectTo(const std::string& path) {
    Platform::Posix::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return socket;
}

bool sendAll(const Platform::Posix::Descriptor& socket, const Bytes& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(socket.get(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

bool isClosedByPeer(const Platform::Posix::Descriptor& socket) {
    std::array<char, 4096> bytes{};
    for (;;) {
        pollfd polled{socket.get(), POLLIN, 0};
        if (::poll(&polled, 1, 60'000) != 1) {
            return false;
        }
        if (::recv(socket.get(), bytes.data(), bytes.size(), 0) <= 0) {
            return true;
        }
    }
}

Bytes message(std::uint32_t object, std::uint32_t reply, const std::string& selector,
              const Bytes& arguments) {
    FrameWriter frame(FrameKind::message);
    frame.u32(object);
    frame.u32(reply);
    frame.shortText(selector);
    frame.raw(arguments);
    return frame.finish();
}

Bytes stringArgument(const std::string& text) {
    FrameWriter frame(FrameKind::message);
    frame.u8(1);
    frame.u8(static_cast<std::uint8_t>(Platform::XPCArgumentKind::string));
    frame.sized(text);
    Bytes bytes = frame.finish();
    constexpr std::ptrdiff_t kLengthAndKind = 5;
    bytes.erase(bytes.begin(), bytes.begin() + kLengthAndKind);
    return bytes;
}

}  // namespace XPCTests
