#include "Platform/Linux/Services/LinuxAuthorization.h"

#include <memory>
#include <optional>

namespace Platform::Linux {

namespace {

std::vector<std::string> requestFor(const std::vector<AuthorizationItem>& rights, std::uint32_t flags,
                                    const std::vector<AuthorizationItem>& environment) {
    std::vector<std::string> request{"authorize", std::to_string(flags)};
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
        const auto reply = services_.request(requestFor(rights, flags, environment));
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

}  // namespace

std::unique_ptr<SFAuthorization> LinuxAuthorization::create() {
    return std::make_unique<LinuxSFAuthorization>(services_);
}

}  // namespace Platform::Linux
