#pragma once

#include "Platform/XPC.h"

namespace HelperTests {

/// Serves nobody; counts open transactions.
class FakeListener final : public Platform::XPCListener {
  public:
    void run(const Accept& /*accept*/, const Refused& /*refused*/, std::uint32_t /*idleSeconds*/) override {}
    [[nodiscard]] std::shared_ptr<void> transaction() override {
        ++opened;
        ++open;
        return {this, [this](void*) { --open; }};
    }
    void disregardPeers() override { disregardsPeers = true; }
    void stop() override { isStopped = true; }

    int opened = 0;
    int open = 0;
    bool disregardsPeers = false;
    bool isStopped = false;
};

}  // namespace HelperTests
