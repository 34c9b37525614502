#pragma once

#include <memory>
#include <string>

namespace Platform {

/// The proxy of an object in another process (NSDistantObject), reduced to whether that process still
/// answers. Used on the main thread only.
class DistantObject {
  public:
    virtual ~DistantObject() = default;

    /// Of the proxy's connection (NSConnection isValid): false once the other process has gone.
    [[nodiscard]] virtual bool isConnectionValid() const = 0;
    /// Of the connection's two ports (NSPort isValid).
    [[nodiscard]] virtual bool isSendPortValid() const = 0;
    [[nodiscard]] virtual bool isReceivePortValid() const = 0;
    /// Lets the connection be served in the common run-loop modes too (NSConnection addRequestMode: with
    /// NSRunLoopCommonModes).
    virtual void addCommonRequestModes() = 0;
};

/// Objects that other processes of this Mac have registered by name (NSConnection). Nothing is logged.
class DistantObjects {
  public:
    virtual ~DistantObjects() = default;

    /// The root object that is registered under `name` on the local host
    /// (rootProxyForConnectionWithRegisteredName:host:). Null if nobody has registered the name or the
    /// process that did is gone. May block while the other process is asked.
    [[nodiscard]] virtual std::shared_ptr<DistantObject> rootProxy(const std::string& name) = 0;
};

}  // namespace Platform
