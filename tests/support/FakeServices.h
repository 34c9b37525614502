#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/Authorization.h"
#include "Platform/DistantObjects.h"
#include "Platform/KernelExtensions.h"
#include "Platform/ServiceManagement.h"
#include "Platform/SystemLog.h"
#include "support/Call.h"

namespace TestSupport {

class FakeSystemLog final : public Platform::SystemLog {
  public:
    void log(std::string_view text) override { lines.emplace_back(text); }

    std::vector<std::string> lines;
};

class FakeKernelExtensions final : public Platform::KernelExtensions {
  public:
    explicit FakeKernelExtensions(CallList& calls) : calls_(calls) {}

    std::int32_t unload(const std::string& bundleIdentifier) override;

    static constexpr auto kNotLoaded = static_cast<std::int32_t>(0xdc008006);
    static constexpr auto kInUse = static_cast<std::int32_t>(0xdc008018);

    /// Every answer, unless there is a list of loaded extensions.
    std::int32_t result = 0;
    /// The loaded extensions, and whether they are in use; unloaded ones leave.
    std::optional<std::map<std::string, bool>> loaded;

  private:
    CallList& calls_;
};

class FakeAuthorization final : public Platform::Authorization {
  public:
    struct Request {
        std::vector<Platform::AuthorizationItem> rights;
        std::uint32_t flags = 0;
        std::vector<Platform::AuthorizationItem> environment;
    };

    explicit FakeAuthorization(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::unique_ptr<Platform::SFAuthorization> create() override;

    bool grants = true;
    bool hasReference = true;
    std::vector<Request> requests;

  private:
    friend class FakeAuthorizationSession;
    CallList& calls_;
};

class FakeServiceManagement final : public Platform::ServiceManagement {
  public:
    explicit FakeServiceManagement(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::optional<Platform::Error> blessJob(
        Platform::LaunchdDomain domain, const std::string& label,
        const Platform::AuthorizationReference& authorization) override;

    std::map<std::string, Platform::Error> failures;

  private:
    CallList& calls_;
};

/// A proxy whose connection and ports break when a test says so.
class FakeDistantObject final : public Platform::DistantObject {
  public:
    explicit FakeDistantObject(CallList& calls) : calls_(calls) {}

    [[nodiscard]] bool isConnectionValid() const override { return connectionIsValid; }
    [[nodiscard]] bool isSendPortValid() const override { return sendPortIsValid; }
    [[nodiscard]] bool isReceivePortValid() const override { return receivePortIsValid; }
    void addCommonRequestModes() override { calls_.push_back({"common request modes"}); }

    bool connectionIsValid = true;
    bool sendPortIsValid = true;
    bool receivePortIsValid = true;

  private:
    CallList& calls_;
};

class FakeDistantObjects final : public Platform::DistantObjects {
  public:
    explicit FakeDistantObjects(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::shared_ptr<Platform::DistantObject> rootProxy(const std::string& name) override;

    /// The names that somebody has registered.
    std::set<std::string> registered;
    /// The proxies that were handed out, in order.
    std::vector<std::shared_ptr<FakeDistantObject>> proxies;

  private:
    CallList& calls_;
};

}  // namespace TestSupport
