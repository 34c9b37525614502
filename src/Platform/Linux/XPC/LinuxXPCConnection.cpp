#include "Platform/Linux/XPC/LinuxXPCConnection.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>

#include "Platform/Linux/XPC/RemoteObject.h"
#include "Platform/Linux/XPC/XPCMarshalling.h"

namespace Platform::Linux {

namespace {

constexpr std::size_t kReadSize = 65536;
// The system's own codes for the two ways in which a connection fails (NSXPCConnectionInterrupted and
// ...Invalid).
constexpr int kInterruptedCode = 4097;
constexpr int kInvalidCode = 4099;

Posix::Descriptor connectToSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return {};
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    Posix::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket ||
        ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return {};
    }
    return socket;
}

}  // namespace

LinuxXPCConnection::LinuxXPCConnection(std::string serviceName, std::string socketPath)
    : serviceName_(std::move(serviceName)), socketPath_(std::move(socketPath)), isListeners_(false) {}

LinuxXPCConnection::LinuxXPCConnection(Posix::Descriptor socket, std::shared_ptr<void> transaction,
                                       std::function<void(const std::string& why)> refused)
    : isListeners_(true),
      refused_(std::move(refused)),
      transaction_(std::move(transaction)),
      channel_(std::move(socket), kMostUnread) {}

void LinuxXPCConnection::setRemoteObjectInterface(XPCInterface interface) {
    remoteInterface_ = std::make_shared<const XPCInterface>(std::move(interface));
}

void LinuxXPCConnection::setExportedObject(XPCInterface interface, std::shared_ptr<XPCObject> object) {
    exported_ = {std::move(object), std::make_shared<const XPCInterface>(std::move(interface))};
}

void LinuxXPCConnection::setInvalidationHandler(std::function<void()> handler) {
    invalidationHandler_ = std::move(handler);
}

void LinuxXPCConnection::setInterruptionHandler(std::function<void()> handler) {
    interruptionHandler_ = std::move(handler);
}

void LinuxXPCConnection::resume() {
    if (isListeners_) {
        channel_.send(FrameWriter(FrameKind::accepted).finish());
    }
    std::thread([self = shared_from_this()] { self->run(); }).detach();
}

void LinuxXPCConnection::invalidate() {
    {
        const std::lock_guard lock(mutex_);
        isInvalid_ = true;
    }
    channel_.refuseMore();
    channel_.wake();
}

std::shared_ptr<XPCObject> LinuxXPCConnection::remoteObjectProxy() {
    return remoteInterface_ == nullptr
               ? nullptr
               : std::make_shared<RemoteObject>(shared_from_this(), 0, remoteInterface_);
}

std::shared_ptr<XPCObject> LinuxXPCConnection::synchronousRemoteObjectProxy(
    std::function<void(const Error&)> failed) {
    return remoteInterface_ == nullptr ? nullptr
                                       : std::make_shared<SynchronousRemoteObject>(
                                             shared_from_this(), remoteInterface_, std::move(failed));
}

// The connection's thread.

void LinuxXPCConnection::run() {
    for (;;) {
        if (!isListeners_ && (!waitForSomethingToSend() || !connectToService())) {
            end(Ending::invalidated);
            return;
        }
        const Ending ending = serve();
        end(ending);
        if (ending == Ending::invalidated) {
            return;
        }
    }
}

bool LinuxXPCConnection::isInvalid() {
    const std::lock_guard lock(mutex_);
    return isInvalid_;
}

bool LinuxXPCConnection::waitForSomethingToSend() {
    while (!isInvalid() && !channel_.hasWaiting()) {
        pollfd wakeup{channel_.wakeup(), POLLIN, 0};
        ::poll(&wakeup, 1, -1);
        channel_.clearWakeup();
    }
    return !isInvalid();
}

bool LinuxXPCConnection::connectToService() {
    Posix::Descriptor socket = connectToSocket(socketPath_);
    const bool isConnected = static_cast<bool>(socket);
    channel_.open(std::move(socket));
    return isConnected;
}

bool LinuxXPCConnection::isReading() {
    return !isListeners_ || (underWay_ < kMostUnderWay && channel_.waitingBytes() < kMostUnreadBeforePause);
}

bool LinuxXPCConnection::waitForSomethingToDo(bool reads) {
    const int events = (reads ? POLLIN : 0) | (channel_.hasWaiting() ? POLLOUT : 0);
    // Without events the socket is left out: the end of the stream, which poll always reports, has to wait
    // too.
    std::array<pollfd, 2> polled{pollfd{events != 0 ? channel_.socket() : -1, static_cast<short>(events), 0},
                                 pollfd{channel_.wakeup(), POLLIN, 0}};
    ::poll(polled.data(), polled.size(), -1);
    if (polled[1].revents != 0) {
        channel_.clearWakeup();
    }
    return reads && polled[0].revents != 0;
}

LinuxXPCConnection::Ending LinuxXPCConnection::serve() {
    FrameBuffer buffer;
    std::array<std::uint8_t, kReadSize> bytes;
    for (;;) {
        Ending ending = Ending::invalidated;
        bool hasMore = false;
        if (!deliverFrames(buffer, hasMore, ending)) {
            return ending;
        }
        const bool isReadable = waitForSomethingToDo(!hasMore && isReading());
        if (isInvalid()) {
            return Ending::invalidated;
        }
        channel_.flush();
        if (channel_.hasOverflowed()) {
            static_cast<void>(refuse("it does not read what it is sent"));
            return Ending::invalidated;
        }
        if (!isReadable) {
            continue;
        }
        const ssize_t count = ::recv(channel_.socket(), bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
            continue;
        }
        if (count <= 0) {
            // A peer that leaves before either side accepted the other was never there.
            return accepted_ && !isListeners_ ? Ending::interrupted : Ending::invalidated;
        }
        buffer.append({bytes.data(), static_cast<std::size_t>(count)});
    }
}

bool LinuxXPCConnection::deliverFrames(FrameBuffer& buffer, bool& hasMore, Ending& ending) {
    while (isReading()) {
        const auto content = buffer.next();
        if (!content) {
            return !buffer.isBroken() || refuse("a frame of a length that is not allowed");
        }
        if (!deliver(*content, ending)) {
            return false;
        }
    }
    hasMore = true;
    return true;
}

void LinuxXPCConnection::end(Ending ending) {
    const bool isInvalid = ending == Ending::invalidated;
    if (isInvalid) {
        channel_.refuseMore();
    }
    channel_.close();
    std::map<std::uint32_t, Pending> pending;
    std::map<std::uint32_t, Exported> exportedArguments;
    {
        const std::lock_guard lock(mutex_);
        isInvalid_ = isInvalid_ || isInvalid;
        pending.swap(pending_);
        exportedArguments.swap(exportedArguments_);
    }
    accepted_ = false;
    const std::string service = "The connection to service named " + serviceName_;
    const Error error = isInvalid ? Error{service + " was invalidated.", kInvalidCode}
                                  : Error{service + " was interrupted.", kInterruptedCode};
    for (auto& [number, each] : pending) {
        each.failed(error);
    }
    const std::function<void()>& handler = isInvalid ? invalidationHandler_ : interruptionHandler_;
    if (handler) {
        handler();
    }
    if (isInvalid) {
        transaction_.reset();
    }
}

// Any thread.

/// The number that identifies the awaited answer; nothing, and `pending` untouched, on an invalid connection.
std::optional<std::uint32_t> LinuxXPCConnection::await(Pending& pending) {
    const std::lock_guard lock(mutex_);
    if (isInvalid_) {
        return std::nullopt;
    }
    pending_.emplace(++lastNumber_, std::move(pending));
    return lastNumber_;
}

void LinuxXPCConnection::send(std::uint32_t object, const XPCMethod& method, std::vector<XPCValue> arguments,
                              Pending pending) {
    std::uint32_t reply = 0;
    if (method.replies) {
        const std::optional<std::uint32_t> number = await(pending);
        if (!number) {
            pending.failed(
                {"The connection to service named " + serviceName_ + " was invalidated.", kInvalidCode});
            return;
        }
        reply = *number;
    }
    channel_.send(messageFrame(
        object, reply, method, std::move(arguments),
        [this](std::shared_ptr<XPCObject> argument, std::shared_ptr<const XPCInterface> interface) {
            return exportObject({std::move(argument), std::move(interface)});
        }));
}

std::uint32_t LinuxXPCConnection::exportObject(Exported exported) {
    const std::lock_guard lock(mutex_);
    const std::uint32_t number = ++lastNumber_;
    exportedArguments_.emplace(number, std::move(exported));
    return number;
}

}  // namespace Platform::Linux
