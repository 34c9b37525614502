#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Platform/Linux/XPC/FrameChannel.h"
#include "Platform/Linux/XPC/XPCWire.h"
#include "Platform/XPC.h"

namespace Platform::Linux {

/// An XPC connection over a Unix-domain stream socket, for either end.
///
/// Each resumed connection has one thread of its own, which keeps it alive: it connects when the first
/// message is waiting, reads and delivers frames, calls the handlers, and sends what could not be sent at
/// once. A client's connection survives its helper: after an interruption the next message connects anew. A
/// listener's does not.
///
/// A peer cannot fill a helper's memory. A message is under way while somebody holds its completion or a
/// proxy that came with it, as an executor holds its delegate. With `kMostUnderWay` messages under way, or
/// with `kMostUnreadBeforePause` bytes that the peer has not read, a listener's connection stops reading.
/// With `kMostUnread` bytes it is refused: work under way goes on, and its calls to the peer have no effect.
/// A client's connection always reads; so the two never wait for each other.
class LinuxXPCConnection final : public XPCConnection,
                                 public std::enable_shared_from_this<LinuxXPCConnection> {
  public:
    static constexpr std::size_t kMostUnderWay = 4;
    static constexpr std::size_t kMostUnreadBeforePause = std::size_t{64} << 10;
    static constexpr std::size_t kMostUnread = std::size_t{8} << 20;

    /// A client's connection to the service whose socket has this path.
    LinuxXPCConnection(std::string serviceName, std::string socketPath);
    /// A listener's connection over an accepted socket. `transaction` is held as long as the connection is in
    /// use; `refused` is told why a message was refused.
    LinuxXPCConnection(Posix::Descriptor socket, std::shared_ptr<void> transaction,
                       std::function<void(const std::string& why)> refused);

    void setRemoteObjectInterface(XPCInterface interface) override;
    void setExportedObject(XPCInterface interface, std::shared_ptr<XPCObject> object) override;
    void setInvalidationHandler(std::function<void()> handler) override;
    void setInterruptionHandler(std::function<void()> handler) override;
    void resume() override;
    void invalidate() override;
    [[nodiscard]] std::shared_ptr<XPCObject> remoteObjectProxy() override;
    [[nodiscard]] std::shared_ptr<XPCObject> synchronousRemoteObjectProxy(
        std::function<void(const Error&)> failed) override;

    /// For proxies. Handles an answer or its failure; called once, on the connection's thread.
    struct Pending {
        XPCReply reply;
        std::function<void(const Error&)> failed;
    };
    /// For proxies: sends one message to the peer's object with this number. `pending` is kept if the method
    /// replies.
    void send(std::uint32_t object, const XPCMethod& method, std::vector<XPCValue> arguments,
              Pending pending);

  private:
    struct Exported {
        std::shared_ptr<XPCObject> object;
        std::shared_ptr<const XPCInterface> interface;
    };
    enum class Ending : std::uint8_t { interrupted, invalidated };

    void run();
    [[nodiscard]] bool isInvalid();
    [[nodiscard]] bool waitForSomethingToSend();
    [[nodiscard]] bool connectToService();
    [[nodiscard]] Ending serve();
    [[nodiscard]] bool isReading();
    /// Whether there is something to read.
    [[nodiscard]] bool waitForSomethingToDo(bool reads);
    /// Sets `hasMore` if it stopped because nothing more may be read for now.
    [[nodiscard]] bool deliverFrames(FrameBuffer& buffer, bool& hasMore, Ending& ending);
    /// This connection, for the contents of one message, which is under way as long as a copy lives.
    [[nodiscard]] std::shared_ptr<LinuxXPCConnection> forOneMessage();
    [[nodiscard]] bool deliver(std::span<const std::uint8_t> content, Ending& ending);
    [[nodiscard]] bool deliverMessage(FrameReader& reader);
    [[nodiscard]] bool deliverReply(FrameReader& reader);
    [[nodiscard]] bool refuse(const std::string& why);
    void answer(std::uint32_t number, const std::optional<Error>& error);
    void end(Ending ending);

    [[nodiscard]] std::optional<std::uint32_t> await(Pending& pending);
    [[nodiscard]] std::uint32_t exportObject(Exported exported);

    const std::string serviceName_;
    const std::string socketPath_;
    const bool isListeners_;
    std::function<void(const std::string&)> refused_;

    // Set before resume, used by the connection's thread.
    std::shared_ptr<const XPCInterface> remoteInterface_;
    Exported exported_;
    std::function<void()> invalidationHandler_;
    std::function<void()> interruptionHandler_;

    // Used by the connection's thread only.
    bool accepted_ = false;
    std::shared_ptr<void> transaction_;

    FrameChannel channel_;
    std::atomic<std::size_t> underWay_ = 0;

    // Shared by all threads, under the mutex.
    std::mutex mutex_;
    std::uint32_t lastNumber_ = 0;
    std::map<std::uint32_t, Exported> exportedArguments_;
    std::map<std::uint32_t, Pending> pending_;
    bool isInvalid_ = false;
};

}  // namespace Platform::Linux
