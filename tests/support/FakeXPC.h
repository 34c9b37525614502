#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/XPC.h"
#include "support/Call.h"

namespace TestSupport {

/// What a fake helper does with a message.
using FakeService = std::function<void(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                                       Platform::XPCReply reply)>;

class FakeConnection final : public Platform::XPCConnection {
  public:
    FakeConnection(CallList& calls, std::string service, FakeService answer);

    void setRemoteObjectInterface(Platform::XPCInterface interface) override;
    void setExportedObject(Platform::XPCInterface interface,
                           std::shared_ptr<Platform::XPCObject> object) override;
    void setInvalidationHandler(std::function<void()> handler) override;
    void setInterruptionHandler(std::function<void()> handler) override;
    void resume() override;
    void invalidate() override;
    [[nodiscard]] std::shared_ptr<Platform::XPCObject> remoteObjectProxy() override;
    [[nodiscard]] std::shared_ptr<Platform::XPCObject> synchronousRemoteObjectProxy(
        std::function<void(const Platform::Error&)> failed) override;

    std::function<void()> invalidationHandler;
    std::function<void()> interruptionHandler;
    std::optional<Platform::XPCInterface> remoteInterface;
    std::optional<Platform::XPCInterface> exportedInterface;
    std::shared_ptr<Platform::XPCObject> exportedObject;
    /// A synchronous call that has not been answered fails when the connection is invalidated.
    bool isInvalidated = false;
    /// Given instead of a remote object of the interface's protocol.
    std::optional<std::string> protocolOfProxy;
    /// A synchronous call fails with this.
    std::optional<Platform::Error> unreachable;

  private:
    CallList& calls_;
    std::string service_;
    FakeService answer_;
};

class FakeXPC final : public Platform::XPC {
  public:
    explicit FakeXPC(CallList& calls) : calls_(calls) {}

    void registerClasses(const Base::AllowedClasses& classes) override;
    [[nodiscard]] std::shared_ptr<Platform::XPCConnection> makeConnection(const std::string& machServiceName,
                                                                          std::uint32_t options) override;
    [[nodiscard]] std::unique_ptr<Platform::XPCListener> makeListener(
        const std::string& machServiceName, const std::vector<std::string>& clientRequirements) override;

    std::map<std::string, FakeService> services;
    std::map<std::string, Platform::Error> unreachable;
    std::optional<std::string> protocolOfProxies;
    std::vector<std::shared_ptr<FakeConnection>> connections;
    /// What launchd hands over to the process, once.
    std::unique_ptr<Platform::XPCListener> listener;
    /// What the last listener was asked to demand of its clients.
    std::vector<std::string> requirements;

  private:
    CallList& calls_;
};

}  // namespace TestSupport
