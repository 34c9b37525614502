#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/XPC.h"

namespace Platform::Darwin {

/// One of the system's proxies - of the remote object, synchronous or not, or of an object that came as an
/// argument - which keeps its connection. A message that the interface does not have is a programming error
/// that ends the process.
class RemoteObject final : public XPCObject {
  public:
    RemoteObject(id proxy, std::shared_ptr<const XPCInterface> interface);

    [[nodiscard]] std::string_view protocolName() const override { return interface_->protocolName; }
    void message(std::string_view selector, std::vector<XPCValue> arguments, XPCReply reply) override;

  private:
    Retained<id> proxy_;
    std::shared_ptr<const XPCInterface> interface_;
};

}  // namespace Platform::Darwin
