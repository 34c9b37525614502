#include "Platform/Linux/Services/LinuxDistantObjects.h"

#include <optional>
#include <utility>
#include <vector>

namespace Platform::Linux {

namespace {

using Fields = std::vector<std::string>;

/// The owner of the name: process id and start, as process 1 writes them.
std::optional<Fields> lookUp(const MacServices& services, const std::string& name) {
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
    [[nodiscard]] bool isThere() const { return lookUp(services_, name_) == owner_; }

    const MacServices services_;
    const std::string name_;
    const Fields owner_;
};

}  // namespace

std::shared_ptr<DistantObject> LinuxDistantObjects::rootProxy(const std::string& name) {
    auto owner = lookUp(services_, name);
    return owner ? std::make_shared<RegisteredObject>(services_, name, std::move(*owner)) : nullptr;
}

}  // namespace Platform::Linux
