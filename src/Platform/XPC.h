#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Base/Archive/AllowedClasses.h"
#include "Base/Archive/Coder.h"
#include "Base/URL.h"
#include "Platform/Error.h"

namespace Platform {

class XPCObject;

/// One argument of a message. A list of coded objects travels as an archive, an object as a proxy.
using XPCValue =
    std::variant<std::string, std::int32_t, Base::URL, Base::CodedObjectList, std::shared_ptr<XPCObject>>;

enum class XPCArgumentKind : std::uint8_t { string, int32, url, codedObjects, object };

struct XPCInterface;

/// One argument as an interface declares it.
struct XPCArgument {
    XPCArgumentKind kind;
    /// For codedObjects: the classes allowed in the list.
    Base::AllowedClasses allowed{};
    /// For object: the proxy's interface.
    std::shared_ptr<const XPCInterface> proxy{};
};

/// One method of a protocol.
struct XPCMethod {
    std::string_view selector;
    std::vector<XPCArgument> arguments;
    /// Whether the sender waits for an answer: a completion block whose one argument is an optional error.
    bool replies = false;
};

/// A protocol as it travels over a connection (NSXPCInterface): its methods and the types allowed in each
/// argument.
struct XPCInterface {
    std::string_view protocolName;
    std::vector<XPCMethod> methods;
};

/// Completion of a method that replies. Called once, on any thread.
using XPCReply = std::function<void(const std::optional<Error>& error)>;

/// An object that understands the messages of one protocol: an exported object, or the proxy of one on the
/// other side.
class XPCObject {
  public:
    virtual ~XPCObject() = default;

    [[nodiscard]] virtual std::string_view protocolName() const = 0;

    /// Delivers one message. `reply` is empty unless the method replies. An exported object is called on the
    /// connection's own thread, one message at a time, with arguments that fit the interface. A proxy returns
    /// at once (a synchronous one, for a method that replies, when the reply or the error handler has run)
    /// and reports no failure to its caller: the connection's handlers do.
    virtual void message(std::string_view selector, std::vector<XPCValue> arguments, XPCReply reply) = 0;
};

/// One connection to a peer (NSXPCConnection). Handlers and exported objects are called on the connection's
/// own thread.
///
/// A resumed connection stays alive and in use, whether or not anybody refers to it, until it becomes
/// invalid: dropping it does not invalidate it.
class XPCConnection {
  public:
    virtual ~XPCConnection() = default;

    /// Before resume: the interface of the remote object.
    virtual void setRemoteObjectInterface(XPCInterface interface) = 0;
    /// Before resume: the object that answers the peer's messages. The connection shares its ownership.
    virtual void setExportedObject(XPCInterface interface, std::shared_ptr<XPCObject> object) = 0;
    /// Called once: the service does not exist or refused the peer, a message was refused, or invalidate was
    /// called.
    virtual void setInvalidationHandler(std::function<void()> handler) = 0;
    /// Called when the peer has gone away while the connection was in use.
    virtual void setInterruptionHandler(std::function<void()> handler) = 0;
    /// Starts delivery. Always succeeds; an unreachable service shows when something is sent.
    virtual void resume() = 0;
    virtual void invalidate() = 0;
    /// A proxy for the remote object, without an error handler. Null without a remote interface.
    [[nodiscard]] virtual std::shared_ptr<XPCObject> remoteObjectProxy() = 0;
    /// A proxy whose calls block until the reply has arrived; `failed` runs on the caller's thread instead of
    /// the reply if the message could not be delivered or the peer went away.
    [[nodiscard]] virtual std::shared_ptr<XPCObject> synchronousRemoteObjectProxy(
        std::function<void(const Error&)> failed) = 0;
};

/// The other end of a connection.
struct XPCPeer {
    std::int32_t pid = 0;
    /// Effective user id.
    std::uint32_t uid = 0;
};

/// The mach service of a helper. One listener serves one process.
class XPCListener {
  public:
    /// `accept` decides on a new, authenticated, not yet resumed connection: it sets interface and object and
    /// returns true, or returns false to refuse the peer. It runs on the thread that called `run`.
    using Accept = std::function<bool(std::shared_ptr<XPCConnection> connection, const XPCPeer& peer)>;
    /// Receives each refused peer or message with the reason, as one line to log. On any thread.
    using Refused = std::function<void(const std::string& why)>;

    virtual ~XPCListener() = default;

    /// Serves until nobody has been connected and no transaction has been open for `idleSeconds`; then
    /// returns. Only peers that satisfy one of the requirements reach `accept`; no byte of another is read.
    virtual void run(const Accept& accept, const Refused& refused, std::uint32_t idleSeconds) = 0;

    /// Opens a transaction: work that must be finished even if nobody is connected any more. It lasts as long
    /// as the returned pointer or a copy of it. May be called on any thread.
    [[nodiscard]] virtual std::shared_ptr<void> transaction() = 0;

    /// From now on a peer that stays connected does not keep `run` going, only a transaction does: it returns
    /// when for `idleSeconds` nobody has come, nobody has left and no transaction was open. May be called on
    /// any thread, more than once.
    virtual void disregardPeers() = 0;

    /// The same, and `run` returns at once if nobody is connected, nobody waits to be accepted and no
    /// transaction is open.
    virtual void stop() = 0;
};

/// NSXPCConnectionPrivileged: the mach service lives in the system domain.
inline constexpr std::uint32_t kXPCConnectionPrivileged = 0x1000;

/// XPC mach services.
class XPC {
  public:
    virtual ~XPC() = default;

    /// Registers the classes of `classes.objects` with the system under their runtime names. Call it before
    /// anybody else's code is loaded: the names are those of the product, whose frameworks may hold classes
    /// with the same names. On macOS a class that already exists ends the process, one that comes later only
    /// causes a warning of the system. Does nothing where classes have no such names.
    virtual void registerClasses(const Base::AllowedClasses& classes) = 0;

    /// A new connection, not yet resumed. Never null; touches nothing.
    [[nodiscard]] virtual std::shared_ptr<XPCConnection> makeConnection(const std::string& machServiceName,
                                                                        std::uint32_t options) = 0;
    /// The listener of this process's own mach service; null if launchd did not hand it one.
    /// `clientRequirements` are code-signing requirements, as the helper's SMAuthorizedClients lists them; a
    /// peer has to satisfy one.
    [[nodiscard]] virtual std::unique_ptr<XPCListener> makeListener(
        const std::string& machServiceName, const std::vector<std::string>& clientRequirements) = 0;
};

}  // namespace Platform
