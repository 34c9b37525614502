#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Platform/Linux/XPC/XPCWire.h"
#include "Platform/Posix/Descriptor.h"

/// A peer that speaks in bytes, well-formed or not.
namespace XPCTests {

using Bytes = std::vector<std::uint8_t>;

[[nodiscard]] Platform::Posix::Descriptor connectTo(const std::string& path);

/// Sends all of `bytes`, waiting while the other end does not read. False when it has closed.
[[nodiscard]] bool sendAll(const Platform::Posix::Descriptor& socket, const Bytes& bytes);

/// Reads and drops everything; true when the other end closes, false when nothing comes for a minute.
[[nodiscard]] bool isClosedByPeer(const Platform::Posix::Descriptor& socket);

/// A message frame with these arguments, counted.
[[nodiscard]] Bytes message(std::uint32_t object, std::uint32_t reply, const std::string& selector,
                            const Bytes& arguments);

/// One string argument, counted.
[[nodiscard]] Bytes stringArgument(const std::string& text);

}  // namespace XPCTests
