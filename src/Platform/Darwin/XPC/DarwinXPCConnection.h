#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>
#include <string>

#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/XPC.h"

namespace Platform::Darwin {

/// An NSXPCConnection, for either end.
///
/// A resumed one is kept by its own invalidation handler until that has run: that is how it outlives whoever
/// made it. The system delivers on a serial queue of the connection's own. When the system cannot decode a
/// message, it drops the message and says so in its log; objects of this program's classes make the
/// connection invalid instead (see Exporter.h), while a list with an object of a foreign class at its top
/// level is only dropped: the system tells nobody.
class DarwinXPCConnection final : public XPCConnection,
                                  public std::enable_shared_from_this<DarwinXPCConnection> {
  public:
    /// A client's connection.
    DarwinXPCConnection(const std::string& machServiceName, std::uint32_t options);
    /// A listener's. `inUse` is held as long as the connection is in use; `refused` is told why a message was
    /// refused.
    DarwinXPCConnection(NSXPCConnection* connection, std::shared_ptr<void> inUse,
                        std::function<void(const std::string& why)> refused);
    ~DarwinXPCConnection() override;

    void setRemoteObjectInterface(XPCInterface interface) override;
    void setExportedObject(XPCInterface interface, std::shared_ptr<XPCObject> object) override;
    void setInvalidationHandler(std::function<void()> handler) override;
    void setInterruptionHandler(std::function<void()> handler) override;
    void resume() override;
    void invalidate() override;
    [[nodiscard]] std::shared_ptr<XPCObject> remoteObjectProxy() override;
    [[nodiscard]] std::shared_ptr<XPCObject> synchronousRemoteObjectProxy(
        std::function<void(const Error&)> failed) override;

  private:
    void installHandlers();
    void didInvalidate();

    const Retained<NSXPCConnection*> connection_;
    const bool isListeners_;
    std::function<void(const std::string&)> refused_;
    bool isResumed_ = false;

    // Set before resume.
    std::shared_ptr<const XPCInterface> remoteInterface_;
    std::function<void()> invalidationHandler_;
    std::function<void()> interruptionHandler_;

    // The connection's queue's own after resume.
    std::shared_ptr<void> inUse_;
};

}  // namespace Platform::Darwin
