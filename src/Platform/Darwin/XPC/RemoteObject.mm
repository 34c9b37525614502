#include "Platform/Darwin/XPC/RemoteObject.h"

#include <utility>

#import "Platform/Darwin/XPC/ProtocolBridge.h"

namespace Platform::Darwin {

RemoteObject::RemoteObject(id proxy, std::shared_ptr<const XPCInterface> interface)
    : proxy_(Retained<id>::of(proxy)), interface_(std::move(interface)) {}

void RemoteObject::message(std::string_view selector, std::vector<XPCValue> arguments, XPCReply reply) {
    const Pool pool;
    sendMessage(proxy_.get(), interface_->protocolName, methodOrDie(*interface_, selector),
                std::move(arguments), std::move(reply));
}

}  // namespace Platform::Darwin
