#include "support/FakeXPC.h"

#include <utility>

namespace TestSupport {

namespace {

class FakeRemoteObject final : public Platform::XPCObject {
  public:
    FakeRemoteObject(std::string protocol, FakeService answer)
        : protocol_(std::move(protocol)), answer_(std::move(answer)) {}

    [[nodiscard]] std::string_view protocolName() const override { return protocol_; }
    void message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                 Platform::XPCReply reply) override {
        if (answer_) {
            answer_(selector, std::move(arguments), std::move(reply));
        }
    }

  private:
    std::string protocol_;
    FakeService answer_;
};

}  // namespace

FakeConnection::FakeConnection(CallList& calls, std::string service, FakeService answer)
    : calls_(calls), service_(std::move(service)), answer_(std::move(answer)) {}

void FakeConnection::setRemoteObjectInterface(Platform::XPCInterface interface) {
    calls_.push_back({"interface", std::string(interface.protocolName)});
    remoteInterface = std::move(interface);
}

void FakeConnection::setExportedObject(Platform::XPCInterface interface,
                                       std::shared_ptr<Platform::XPCObject> object) {
    calls_.push_back({"export", std::string(interface.protocolName)});
    exportedInterface = std::move(interface);
    exportedObject = std::move(object);
}

void FakeConnection::setInvalidationHandler(std::function<void()> handler) {
    calls_.push_back({"set invalidation handler"});
    invalidationHandler = std::move(handler);
}

void FakeConnection::setInterruptionHandler(std::function<void()> handler) {
    calls_.push_back({"set interruption handler"});
    interruptionHandler = std::move(handler);
}

void FakeConnection::resume() {
    calls_.push_back({"resume", service_});
}

void FakeConnection::invalidate() {
    calls_.push_back({"invalidate", service_});
    isInvalidated = true;
}

std::shared_ptr<Platform::XPCObject> FakeConnection::remoteObjectProxy() {
    calls_.push_back({"proxy"});
    if (!remoteInterface) {
        return nullptr;
    }
    return std::make_shared<FakeRemoteObject>(
        protocolOfProxy.value_or(std::string(remoteInterface->protocolName)), answer_);
}

std::shared_ptr<Platform::XPCObject> FakeConnection::synchronousRemoteObjectProxy(
    std::function<void(const Platform::Error&)> failed) {
    calls_.push_back({"synchronous proxy"});
    if (!remoteInterface) {
        return nullptr;
    }
    FakeService answer = [this, failed](std::string_view selector, std::vector<Platform::XPCValue> arguments,
                                        const Platform::XPCReply& reply) {
        const auto isAnswered = std::make_shared<bool>(false);
        if (answer_) {
            answer_(selector, std::move(arguments),
                    [isAnswered, reply](const std::optional<Platform::Error>& error) {
                        *isAnswered = true;
                        reply(error);
                    });
        }
        if (!*isAnswered && isInvalidated) {
            failed({"The connection to service named " + service_ + " was invalidated.", 4099});
        }
    };
    if (unreachable) {
        answer = [failed = std::move(failed), error = *unreachable](
                     std::string_view, std::vector<Platform::XPCValue>, const Platform::XPCReply&) {
            failed(error);
        };
    }
    return std::make_shared<FakeRemoteObject>(
        protocolOfProxy.value_or(std::string(remoteInterface->protocolName)), std::move(answer));
}

void FakeXPC::registerClasses(const Base::AllowedClasses& classes) {
    calls_.push_back({"register classes", classes.objects.size()});
}

std::shared_ptr<Platform::XPCConnection> FakeXPC::makeConnection(const std::string& machServiceName,
                                                                 std::uint32_t options) {
    calls_.push_back({"connection", machServiceName, options});
    auto connection = std::make_shared<FakeConnection>(calls_, machServiceName, services[machServiceName]);
    connection->protocolOfProxy = protocolOfProxies;
    if (const auto found = unreachable.find(machServiceName); found != unreachable.end()) {
        connection->unreachable = found->second;
    }
    connections.push_back(connection);
    return connection;
}

std::unique_ptr<Platform::XPCListener> FakeXPC::makeListener(
    const std::string& machServiceName, const std::vector<std::string>& clientRequirements) {
    calls_.push_back({"listen", machServiceName});
    requirements = clientRequirements;
    return std::move(listener);
}

}  // namespace TestSupport
