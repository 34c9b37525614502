#pragma once

#include <memory>
#include <string>

#include "Platform/XPC.h"

namespace NorvikCommon {

/// Talks to a privileged helper over an XPC mach service; subclasses hook into the connection's life. Objects
/// are owned by shared pointers: a connection's handlers hold their client weakly, so that a pending
/// connection never keeps a released client alive. Nothing is logged and no call fails: an unreachable helper
/// shows only in the handlers.
class XPCClient : public std::enable_shared_from_this<XPCClient> {
  public:
    /// Creates no connection.
    XPCClient(std::string machServiceName, bool isServicePrivileged);
    XPCClient(const XPCClient&) = delete;
    XPCClient& operator=(const XPCClient&) = delete;
    virtual ~XPCClient() = default;

    [[nodiscard]] const std::string& machServiceName() const { return machServiceName_; }
    /// Whether to connect with the privileged option: the service lives in the system domain.
    [[nodiscard]] bool isServicePrivileged() const { return isServicePrivileged_; }
    /// The current connection; null before `connect` and after `stop`.
    [[nodiscard]] const std::shared_ptr<Platform::XPCConnection>& connection() const { return connection_; }
    void setConnection(std::shared_ptr<Platform::XPCConnection> connection) {
        connection_ = std::move(connection);
    }

    /// Makes and resumes a new connection, between the two resume hooks. An earlier one is replaced, not
    /// invalidated. Call `connect` and `stop` on one thread.
    void connect();
    /// Invalidates and drops the connection, if there is one.
    void stop();

  protected:
    // Hooks, empty here. The last two are called on the connection's own thread.

    /// Here a subclass sets the remote object's interface.
    virtual void willResumeConnection(Platform::XPCConnection& connection);
    /// Here a subclass takes the remote proxy.
    virtual void didResumeConnection(Platform::XPCConnection& connection);
    virtual void connectionDidInvalidate();
    virtual void connectionDidInterrupt();

  private:
    std::string machServiceName_;
    bool isServicePrivileged_;
    std::shared_ptr<Platform::XPCConnection> connection_;
};

}  // namespace NorvikCommon
