#include "Platform/Linux/Services/LinuxServices.h"

#include <vector>

#include "Base/WholeNumber.h"

namespace Platform::Linux {

namespace {

using Fields = std::vector<std::string>;

/// kOSKextReturnInternalError: stands for an answer that never came.
constexpr std::int32_t kInternalError = static_cast<std::int32_t>(0xdc008001);

Fields authorizationRequest(const std::vector<AuthorizationItem>& rights, std::uint32_t flags,
                            const std::vector<AuthorizationItem>& environment) {
    Fields request{"authorize", std::to_string(flags)};
    for (const AuthorizationItem& right : rights) {
        request.push_back(right.name);
    }
    if (!environment.empty()) {
        request.emplace_back();
    }
    for (const AuthorizationItem& item : environment) {
        request.push_back(item.name);
        request.push_back(item.value.value_or(""));
    }
    return request;
}

class LinuxSFAuthorization final : public SFAuthorization {
  public:
    explicit LinuxSFAuthorization(MacServices services) : services_(std::move(services)) {}
    LinuxSFAuthorization(const LinuxSFAuthorization&) = delete;
    LinuxSFAuthorization& operator=(const LinuxSFAuthorization&) = delete;
    ~LinuxSFAuthorization() override { release(); }

    bool obtainWithRights(const std::vector<AuthorizationItem>& rights, std::uint32_t flags,
                          const std::vector<AuthorizationItem>& environment) override {
        const auto reply = services_.request(authorizationRequest(rights, flags, environment));
        if (!reply || reply->size() != 2 || reply->front() != "0") {
            return false;
        }
        release();
        reference_.emplace(reply->back());
        return true;
    }

    const AuthorizationReference* authorizationRef() const override {
        return reference_ ? &*reference_ : nullptr;
    }

  private:
    void release() {
        if (reference_) {
            static_cast<void>(services_.request({"release", reference_->token()}));
            reference_.reset();
        }
    }

    MacServices services_;
    std::optional<LinuxAuthorizationReference> reference_;
};

/// The owner of the name: process id and start, as process 1 writes them.
std::optional<Fields> ownerOf(const std::string& name, const MacServices& services) {
    auto reply = services.request({"lookup", name});
    return reply && reply->size() == 3 && reply->front() == "0" ? std::move(reply) : std::nullopt;
}

class RegisteredObject final : public DistantObject {
  public:
    RegisteredObject(MacServices services, std::string name, Fields owner)
        : services_(std::move(services)), name_(std::move(name)), owner_(std::move(owner)) {}

    bool isConnectionValid() const override { return isThere(); }
    bool isSendPortValid() const override { return isThere(); }
    bool isReceivePortValid() const override { return isThere(); }
    void addCommonRequestModes() override {}

  private:
    [[nodiscard]] bool isThere() const { return ownerOf(name_, services_) == owner_; }

    const MacServices services_;
    const std::string name_;
    const Fields owner_;
};

}  // namespace

std::unique_ptr<SFAuthorization> LinuxAuthorization::create() {
    return std::make_unique<LinuxSFAuthorization>(services());
}

std::optional<Error> LinuxServiceManagement::blessJob(LaunchdDomain /*domain*/, const std::string& label,
                                                      const AuthorizationReference& authorization) {
    const auto& reference = static_cast<const LinuxAuthorizationReference&>(authorization);
    const auto reply = services().request({"bless", reference.token(), label});
    if (!reply || reply->size() != 2) {
        return Error{"launchd does not answer (blessing " + label + ").", 0};
    }
    const std::optional<std::int32_t> code = Base::wholeNumber<std::int32_t>(reply->front());
    if (!code) {
        return Error{"launchd gave an invalid answer (blessing " + label + ").", 0};
    }
    return *code == 0 ? std::nullopt : std::optional(Error{reply->back(), *code});
}

std::int32_t LinuxKernelExtensions::unload(const std::string& bundleIdentifier) {
    const auto reply = services().request({"unload-kext", bundleIdentifier});
    return reply && reply->size() == 1
               ? Base::wholeNumber<std::int32_t>(reply->front()).value_or(kInternalError)
               : kInternalError;
}

std::shared_ptr<DistantObject> LinuxDistantObjects::rootProxy(const std::string& name) {
    auto owner = ownerOf(name, services());
    return owner ? std::make_shared<RegisteredObject>(services(), name, std::move(*owner)) : nullptr;
}

}  // namespace Platform::Linux
