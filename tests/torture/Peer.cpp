// One peer of the installer helper, for the place in the uninstaller's bundle and for places without any
// right:
//   peer whole PATH SECONDS       sends a list that removes PATH and waits for its report
//   peer half PATH SECONDS        sends half of that message and holds the line
//   peer silent PATH SECONDS      connects and says nothing
//   peer garbage PATH SECONDS     sends random bytes, and connects anew whenever the helper hangs up
//   peer flood PATH SECONDS       sends that list again and again, and reads nothing
// Exit status: 0 the helper hung up on every connection without taking it, 10 it took one, 11 there is no
// service.

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "Platform/Linux/XPC/XPCMarshalling.h"

namespace {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

constexpr const char* kService = "/var/run/mach/com.norvik.InstallerHelper";
constexpr int kRefused = 0;
constexpr int kTaken = 10;
constexpr int kNoService = 11;

class Delegate final : public Platform::XPCObject {
  public:
    [[nodiscard]] std::string_view protocolName() const override { return "CommandExecutingDelegate"; }
    void message(std::string_view /*selector*/, std::vector<Platform::XPCValue> /*arguments*/,
                 Platform::XPCReply /*reply*/) override {}
};

Bytes listThatRemoves(const std::string& path) {
    const Platform::XPCInterface interface = InstallCommon::CreateCommandExecutingXPCInterface();
    Base::CodedObjectList commands;
    commands.push_back(std::make_unique<InstallCommon::RemoveCommand>("Deleting", Base::URL::fileURL(path)));
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(std::move(commands));
    arguments.emplace_back(std::shared_ptr<Platform::XPCObject>(std::make_shared<Delegate>()));
    const auto exportObject = [](const auto&, const auto&) { return std::uint32_t{1}; };
    return Platform::Linux::messageFrame(
        0, 0, *Platform::Linux::findMethod(interface, "executeWithCommands:delegate:"), std::move(arguments),
        exportObject);
}

/// One connection; closed with its owner.
class Line {
  public:
    Line() : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, kService);
        connected_ = ::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;
    ~Line() { ::close(socket_); }

    [[nodiscard]] bool connected() const { return connected_; }
    /// Waits until the line can be read or written; false at `end`.
    [[nodiscard]] bool waitFor(short events, Clock::time_point end) const {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd polled{socket_, events, 0};
        return ::poll(&polled, 1, static_cast<int>(std::max<long>(rest, 0))) > 0;
    }
    /// Sends what fits now; negative when the helper has hung up.
    [[nodiscard]] ssize_t send(std::span<const std::uint8_t> bytes) const {
        return ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }
    /// Reads until the helper hangs up, `frames` bytes of its have come, or `end`. The first byte that comes
    /// says that the helper took the connection.
    [[nodiscard]] std::size_t receive(std::size_t wanted, Clock::time_point end) const {
        std::size_t received = 0;
        while (received < wanted && waitFor(POLLIN, end)) {
            std::uint8_t buffer[4096];
            const ssize_t count = ::recv(socket_, buffer, sizeof buffer, 0);
            if (count <= 0) {
                break;
            }
            received += static_cast<std::size_t>(count);
        }
        return received;
    }

  private:
    int socket_;
    bool connected_ = false;
};

/// Length and kind of the frame that says that a connection was taken.
constexpr std::size_t kAcceptedFrame = 5;

int sendOnceAndWait(std::span<const std::uint8_t> bytes, std::size_t answer, Clock::time_point end) {
    const Line line;
    if (!line.connected()) {
        return kNoService;
    }
    static_cast<void>(line.send(bytes));
    return line.receive(answer, end) > 0 ? kTaken : kRefused;
}

int sendGarbage(std::mt19937& chance, Clock::time_point end) {
    int result = kRefused;
    while (Clock::now() < end) {
        Bytes bytes(64 + chance() % 4096);
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>(chance());
        }
        // Half of it looks like a frame at first.
        if (chance() % 2 == 0) {
            const std::size_t length = bytes.size() - 4;
            bytes[0] = bytes[1] = 0;
            bytes[2] = static_cast<std::uint8_t>(length >> 8U);
            bytes[3] = static_cast<std::uint8_t>(length);
            bytes[4] = 2;
        }
        result = std::max(result, sendOnceAndWait(bytes, bytes.size(), end));
    }
    return result;
}

int flood(const Bytes& list, Clock::time_point end) {
    const Line line;
    if (!line.connected()) {
        return kNoService;
    }
    std::size_t sent = 0;
    while (line.waitFor(POLLOUT, end) && Clock::now() < end) {
        const ssize_t count = line.send(std::span(list).subspan(sent));
        if (count < 0) {
            break;
        }
        sent = (sent + static_cast<std::size_t>(count)) % list.size();
    }
    return line.receive(kAcceptedFrame, Clock::now() + std::chrono::seconds(1)) > 0 ? kTaken : kRefused;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 4) {
        return 2;
    }
    const std::string kind = argv[1];
    const Bytes list = listThatRemoves(argv[2]);
    const auto end = Clock::now() + std::chrono::milliseconds(static_cast<long>(std::atof(argv[3]) * 1000));
    std::mt19937 chance(static_cast<unsigned>(::getpid()));
    if (kind == "garbage") {
        return sendGarbage(chance, end);
    }
    if (kind == "flood") {
        return flood(list, end);
    }
    std::span<const std::uint8_t> bytes(list);
    if (kind != "whole") {
        bytes = bytes.first(kind == "half" ? list.size() / 2 : 0);
    }
    // The report follows the first frame.
    return sendOnceAndWait(bytes, kind == "whole" ? kAcceptedFrame + 1 : list.size(), end);
}
