#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Platform/XPC.h"

/// An exported object whose proxy is itself. A message to `proxy` goes out through the protocol's real
/// method and comes back in through it, as it would at the two ends of a connection; only the transport is
/// left out.
class BridgeLoop {
  public:
    BridgeLoop(std::shared_ptr<Platform::XPCObject> object, const Platform::XPCInterface& interface);
    BridgeLoop(const BridgeLoop&) = delete;
    BridgeLoop& operator=(const BridgeLoop&) = delete;
    ~BridgeLoop();

    [[nodiscard]] std::shared_ptr<Platform::XPCObject> proxy() const;

    /// What only another program sends: messages that no proxy of ours does. Each to an object of its
    /// protocol.
    enum class Foreign : std::uint8_t { noCommands, stringsAsCommands, noDelegate, noText, noURL, webURL };
    void send(Foreign message) const;

    /// What the refused messages were refused for, in order.
    [[nodiscard]] const std::vector<std::string>& refusals() const { return *refusals_; }
    /// How often a connection was ended since the loop was made.
    [[nodiscard]] int invalidations() const;

  private:
    void* exporter_;
    std::shared_ptr<const Platform::XPCInterface> interface_;
    std::shared_ptr<std::vector<std::string>> refusals_;
    int invalidationsBefore_;
};
