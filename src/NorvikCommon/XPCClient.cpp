#include "NorvikCommon/XPCClient.h"

#include <utility>

#include "Platform/SystemPorts.h"

namespace NorvikCommon {

XPCClient::XPCClient(std::string machServiceName, bool isServicePrivileged)
    : machServiceName_(std::move(machServiceName)), isServicePrivileged_(isServicePrivileged) {}

void XPCClient::connect() {
    setConnection(Platform::SystemPorts::current().xpc->makeConnection(
        machServiceName_, isServicePrivileged_ ? Platform::kXPCConnectionPrivileged : 0));
    const std::shared_ptr<Platform::XPCConnection> connection = connection_;
    connection->setInvalidationHandler([weakSelf = weak_from_this()] {
        if (const std::shared_ptr<XPCClient> self = weakSelf.lock()) {
            self->connectionDidInvalidate();
        }
    });
    connection->setInterruptionHandler([weakSelf = weak_from_this()] {
        if (const std::shared_ptr<XPCClient> self = weakSelf.lock()) {
            self->connectionDidInterrupt();
        }
    });
    willResumeConnection(*connection);
    connection->resume();
    didResumeConnection(*connection);
}

void XPCClient::stop() {
    if (connection_ != nullptr) {
        connection_->invalidate();
    }
    connection_ = nullptr;
}

void XPCClient::willResumeConnection(Platform::XPCConnection& /*connection*/) {}
void XPCClient::didResumeConnection(Platform::XPCConnection& /*connection*/) {}
void XPCClient::connectionDidInvalidate() {}
void XPCClient::connectionDidInterrupt() {}

}  // namespace NorvikCommon
