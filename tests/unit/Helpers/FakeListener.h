#pragma once

#include "Platform/XPC.h"

namespace HelperTests {

/// Serves nobody but whom `onRun` lets in; counts open transactions.
class FakeListener final : public Platform::XPCListener {
  public:
    void run(const Accept& accept, const Refused& refused, std::uint32_t idle) override {
        idleSeconds = idle;
        if (onRun) {
            onRun(accept, refused);
        }
    }
    [[nodiscard]] std::shared_ptr<void> transaction() override {
        ++opened;
        ++open;
        return {this, [this](void*) { --open; }};
    }
    void disregardPeers() override { disregardsPeers = true; }
    void stop() override { isStopped = true; }

    std::function<void(const Accept& accept, const Refused& refused)> onRun;
    std::uint32_t idleSeconds = 0;
    int opened = 0;
    int open = 0;
    bool disregardsPeers = false;
    bool isStopped = false;
};

}  // namespace HelperTests
