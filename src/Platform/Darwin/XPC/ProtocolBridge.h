#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Error.h"
#include "Platform/XPC.h"

/// Between the port's messages and the methods of the protocols in Protocols.h. What a protocol's messages
/// are is written once for each direction, in typed calls that the compiler checks: sending in
/// ProtocolBridge.mm, receiving in Exporter.mm. A protocol or selector that is in neither is a programming
/// error that ends the process.
namespace Platform::Darwin {

/// The NSXPCInterface that stands for `interface`, autoreleased: its protocol; for a list of coded objects
/// the allowed classes, no others, which it registers; for an object the interface of its proxy.
[[nodiscard]] NSXPCInterface* systemInterface(const XPCInterface& interface);

/// The object to export for `object`, autoreleased. `refused`, which may be empty, is told when a message is
/// refused.
[[nodiscard]] id exporterOf(std::shared_ptr<XPCObject> object, std::shared_ptr<const XPCInterface> interface,
                            std::function<void(const std::string& why)> refused);

/// Sends one message to `target`, a proxy that understands `protocolName`. Arguments fit the method.
void sendMessage(id target, std::string_view protocolName, const XPCMethod& method,
                 std::vector<XPCValue> arguments, XPCReply reply);

/// The method of `interface` with this selector.
[[nodiscard]] const XPCMethod& methodOrDie(const XPCInterface& interface, std::string_view selector);

/// The reply that a completion block takes.
[[nodiscard]] XPCReply replyOf(void (^completion)(NSError* error));

[[nodiscard]] Error errorOf(NSError* error);

}  // namespace Platform::Darwin
