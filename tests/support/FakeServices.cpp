#include "support/FakeServices.h"

namespace TestSupport {

std::int32_t FakeKernelExtensions::unload(const std::string& bundleIdentifier) {
    calls_.push_back({"unload", bundleIdentifier});
    if (!loaded) {
        return result;
    }
    const auto extension = loaded->find(bundleIdentifier);
    if (extension == loaded->end()) {
        return kNotLoaded;
    }
    if (extension->second) {
        return kInUse;
    }
    loaded->erase(extension);
    return 0;
}

// Authorization and blessing.

class FakeAuthorizationSession final : public Platform::SFAuthorization {
  public:
    explicit FakeAuthorizationSession(FakeAuthorization& owner) : owner_(owner) {}
    FakeAuthorizationSession(const FakeAuthorizationSession&) = delete;
    FakeAuthorizationSession& operator=(const FakeAuthorizationSession&) = delete;
    ~FakeAuthorizationSession() override { owner_.calls_.push_back({"end of authorization"}); }

    [[nodiscard]] bool obtainWithRights(
        const std::vector<Platform::AuthorizationItem>& rights, std::uint32_t flags,
        const std::vector<Platform::AuthorizationItem>& environment) override {
        owner_.calls_.push_back({"authorize", rights.at(0).name, flags});
        owner_.requests.push_back({rights, flags, environment});
        return owner_.grants;
    }
    [[nodiscard]] const Platform::AuthorizationReference* authorizationRef() const override {
        return owner_.hasReference ? &reference_ : nullptr;
    }

  private:
    FakeAuthorization& owner_;
    Platform::AuthorizationReference reference_;
};

std::unique_ptr<Platform::SFAuthorization> FakeAuthorization::create() {
    return std::make_unique<FakeAuthorizationSession>(*this);
}

std::optional<Platform::Error> FakeServiceManagement::blessJob(
    Platform::LaunchdDomain /*domain*/, const std::string& label,
    const Platform::AuthorizationReference& /*authorization*/) {
    calls_.push_back({"bless", label});
    const auto found = failures.find(label);
    return found == failures.end() ? std::nullopt : std::optional(found->second);
}

std::shared_ptr<Platform::DistantObject> FakeDistantObjects::rootProxy(const std::string& name) {
    calls_.push_back({"root proxy", name});
    if (!registered.contains(name)) {
        return nullptr;
    }
    proxies.push_back(std::make_shared<FakeDistantObject>(calls_));
    return proxies.back();
}

}  // namespace TestSupport
