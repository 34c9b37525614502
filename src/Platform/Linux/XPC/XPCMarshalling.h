#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/XPC/XPCWire.h"
#include "Platform/XPC.h"

namespace Platform::Linux {

/// Gives a local object a number by which the peer can call it.
using ExportObject = std::function<std::uint32_t(std::shared_ptr<XPCObject> object,
                                                 std::shared_ptr<const XPCInterface> interface)>;
/// Makes the proxy of an object that the peer numbered.
using MakeProxy = std::function<std::shared_ptr<XPCObject>(std::uint32_t number,
                                                           std::shared_ptr<const XPCInterface> interface)>;

/// The method of `interface` with this selector, or null.
[[nodiscard]] const XPCMethod* findMethod(const XPCInterface& interface, std::string_view selector);

/// A message frame. Arguments that do not fit the method are a programming error that ends the process.
[[nodiscard]] std::vector<std::uint8_t> messageFrame(std::uint32_t object, std::uint32_t reply,
                                                     const XPCMethod& method, std::vector<XPCValue> arguments,
                                                     const ExportObject& exportObject);

/// Reads a message's arguments as the method declares them. On the first fault returns nothing and sets
/// `refusal` to one line; nothing of the message has been delivered then.
[[nodiscard]] std::optional<std::vector<XPCValue>> readArguments(FrameReader& reader, const XPCMethod& method,
                                                                 const MakeProxy& makeProxy,
                                                                 std::string& refusal);

}  // namespace Platform::Linux
