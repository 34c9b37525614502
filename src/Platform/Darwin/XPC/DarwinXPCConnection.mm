#include "Platform/Darwin/XPC/DarwinXPCConnection.h"

#include <utility>

#import "Platform/Darwin/XPC/ProtocolBridge.h"
#include "Platform/Darwin/XPC/RemoteObject.h"

namespace Platform::Darwin {

DarwinXPCConnection::DarwinXPCConnection(const std::string& machServiceName, std::uint32_t options)
    : connection_(Retained<NSXPCConnection*>::adopt([[NSXPCConnection alloc]
          initWithMachServiceName:foundationString(machServiceName)
                          options:static_cast<NSXPCConnectionOptions>(options)])),
      isListeners_(false) {}

DarwinXPCConnection::DarwinXPCConnection(NSXPCConnection* connection, std::shared_ptr<void> inUse,
                                         std::function<void(const std::string& why)> refused)
    : connection_(Retained<NSXPCConnection*>::of(connection)),
      isListeners_(true),
      refused_(std::move(refused)),
      inUse_(std::move(inUse)) {}

DarwinXPCConnection::~DarwinXPCConnection() {
    // The system wants a connection invalidated before it goes, and resumed before it is invalidated. A
    // listener's that was not accepted is invalidated by the system.
    if (!isResumed_ && !isListeners_) {
        const Pool pool;
        [connection_.get() resume];
        [connection_.get() invalidate];
    }
}

void DarwinXPCConnection::setRemoteObjectInterface(XPCInterface interface) {
    const Pool pool;
    remoteInterface_ = std::make_shared<const XPCInterface>(std::move(interface));
    [connection_.get() setRemoteObjectInterface:systemInterface(*remoteInterface_)];
}

void DarwinXPCConnection::setExportedObject(XPCInterface interface, std::shared_ptr<XPCObject> object) {
    const Pool pool;
    auto shared = std::make_shared<const XPCInterface>(std::move(interface));
    [connection_.get() setExportedInterface:systemInterface(*shared)];
    [connection_.get() setExportedObject:exporterOf(std::move(object), std::move(shared), refused_)];
}

void DarwinXPCConnection::setInvalidationHandler(std::function<void()> handler) {
    invalidationHandler_ = std::move(handler);
}

void DarwinXPCConnection::setInterruptionHandler(std::function<void()> handler) {
    interruptionHandler_ = std::move(handler);
}

void DarwinXPCConnection::installHandlers() {
    // The system keeps its handlers; on which systems it drops them after the last call is not said. So what
    // keeps this object is taken out of the handler's hands by the handler itself.
    const auto keeper = std::make_shared<std::shared_ptr<DarwinXPCConnection>>(shared_from_this());
    [connection_.get() setInvalidationHandler:^{
      const std::shared_ptr<DarwinXPCConnection> self = std::exchange(*keeper, nullptr);
      if (self != nullptr) {
          self->didInvalidate();
      }
    }];
    const std::weak_ptr<DarwinXPCConnection> weakSelf = weak_from_this();
    [connection_.get() setInterruptionHandler:^{
      const std::shared_ptr<DarwinXPCConnection> self = weakSelf.lock();
      if (self != nullptr && self->interruptionHandler_) {
          self->interruptionHandler_();
      }
    }];
}

void DarwinXPCConnection::didInvalidate() {
    if (invalidationHandler_) {
        invalidationHandler_();
    }
    inUse_.reset();
}

void DarwinXPCConnection::resume() {
    const Pool pool;
    isResumed_ = true;
    installHandlers();
    [connection_.get() resume];
}

void DarwinXPCConnection::invalidate() {
    const Pool pool;
    if (!isResumed_) {
        resume();
    }
    [connection_.get() invalidate];
}

std::shared_ptr<XPCObject> DarwinXPCConnection::remoteObjectProxy() {
    if (remoteInterface_ == nullptr) {
        return nullptr;
    }
    const Pool pool;
    return std::make_shared<RemoteObject>([connection_.get() remoteObjectProxy], remoteInterface_);
}

std::shared_ptr<XPCObject> DarwinXPCConnection::synchronousRemoteObjectProxy(
    std::function<void(const Error&)> failed) {
    if (remoteInterface_ == nullptr) {
        return nullptr;
    }
    const Pool pool;
    const id proxy = [connection_.get() synchronousRemoteObjectProxyWithErrorHandler:^(NSError* error) {
      failed(errorOf(error));
    }];
    return std::make_shared<RemoteObject>(proxy, remoteInterface_);
}

}  // namespace Platform::Darwin
