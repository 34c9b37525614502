#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Platform/XPC.h"

namespace Platform::Linux {

class LinuxXPCConnection;

/// The proxy of an object at the other end of a connection, which it keeps alive. A message that the
/// interface does not have is a programming error that ends the process.
class RemoteObject final : public XPCObject {
  public:
    RemoteObject(std::shared_ptr<LinuxXPCConnection> connection, std::uint32_t number,
                 std::shared_ptr<const XPCInterface> interface);

    [[nodiscard]] std::string_view protocolName() const override { return interface_->protocolName; }
    void message(std::string_view selector, std::vector<XPCValue> arguments, XPCReply reply) override;

  private:
    std::shared_ptr<LinuxXPCConnection> connection_;
    std::uint32_t number_;
    std::shared_ptr<const XPCInterface> interface_;
};

/// The same for the peer's exported object, with calls that block until they are answered.
class SynchronousRemoteObject final : public XPCObject {
  public:
    SynchronousRemoteObject(std::shared_ptr<LinuxXPCConnection> connection,
                            std::shared_ptr<const XPCInterface> interface,
                            std::function<void(const Error&)> failed);

    [[nodiscard]] std::string_view protocolName() const override { return interface_->protocolName; }
    void message(std::string_view selector, std::vector<XPCValue> arguments, XPCReply reply) override;

  private:
    std::shared_ptr<LinuxXPCConnection> connection_;
    std::shared_ptr<const XPCInterface> interface_;
    std::function<void(const Error&)> failed_;
};

}  // namespace Platform::Linux
