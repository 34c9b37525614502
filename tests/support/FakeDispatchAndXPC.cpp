#include "Base/FatalError.h"
#include "support/FakeMac.h"

namespace TestSupport {

namespace {

class FakeSemaphore final : public Platform::Semaphore {
  public:
    FakeSemaphore(std::int64_t value, FakeDispatch& owner, CallList& calls)
        : value_(value), owner_(owner), calls_(calls) {}

    void signal() override {
        if (owner_.onSignal) {
            owner_.onSignal();
        }
        ++value_;
    }
    [[nodiscard]] bool wait(std::uint64_t deadline) override {
        calls_.push_back("wait until " + std::to_string(deadline));
        if (owner_.onWait) {
            owner_.onWait();
        }
        if (value_ <= 0) {
            return false;
        }
        --value_;
        return true;
    }

  private:
    std::int64_t value_;
    FakeDispatch& owner_;
    CallList& calls_;
};

class FakeQueue final : public Platform::Queue {
  public:
    FakeQueue(FakeDispatch& owner, CallList& calls) : owner_(owner), calls_(calls) {}

    void async(std::function<void()> block) override {
        calls_.emplace_back("async");
        if (owner_.keepsBlocks) {
            owner_.kept.push_back(std::move(block));
        } else {
            block();
        }
    }
    void sync(const std::function<void()>& block) override {
        calls_.emplace_back("sync");
        block();
    }

  private:
    FakeDispatch& owner_;
    CallList& calls_;
};

class FakeTimer final : public Platform::Timer {
  public:
    explicit FakeTimer(CallList& calls) : calls_(calls) {}

    void schedule(std::uint64_t start, std::uint64_t interval, std::uint64_t leeway) override {
        calls_.push_back("timer " + std::to_string(start) + " " + std::to_string(interval) + " " +
                         std::to_string(leeway));
    }
    void resume() override { calls_.emplace_back("timer resume"); }
    void cancel() override { calls_.emplace_back("timer cancel"); }

  private:
    CallList& calls_;
};

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

void FakeDispatch::runKept() {
    while (!kept.empty()) {
        const std::function<void()> block = std::move(kept.front());
        kept.pop_front();
        block();
    }
}

std::unique_ptr<Platform::Semaphore> FakeDispatch::makeSemaphore(std::int64_t value) {
    calls_.push_back("semaphore " + std::to_string(value));
    return std::make_unique<FakeSemaphore>(value, *this, calls_);
}

std::unique_ptr<Platform::Queue> FakeDispatch::makeConcurrentQueue(const std::string& label) {
    calls_.push_back("concurrent queue " + label);
    return std::make_unique<FakeQueue>(*this, calls_);
}

std::unique_ptr<Platform::Queue> FakeDispatch::makeSerialQueue(const std::string& label) {
    calls_.push_back("serial queue " + label);
    return std::make_unique<FakeQueue>(*this, calls_);
}

std::unique_ptr<Platform::Timer> FakeDispatch::makeTimer(std::function<void()> handler) {
    timerHandlers.push_back(std::move(handler));
    return std::make_unique<FakeTimer>(calls_);
}

FakeConnection::FakeConnection(CallList& calls, std::string service, FakeService answer)
    : calls_(calls), service_(std::move(service)), answer_(std::move(answer)) {}

void FakeConnection::setRemoteObjectInterface(Platform::XPCInterface interface) {
    calls_.push_back("interface " + std::string(interface.protocolName));
    remoteInterface = std::move(interface);
}

void FakeConnection::setExportedObject(Platform::XPCInterface interface,
                                       std::shared_ptr<Platform::XPCObject> object) {
    calls_.push_back("export " + std::string(interface.protocolName));
    exportedInterface = std::move(interface);
    exportedObject = std::move(object);
}

void FakeConnection::setInvalidationHandler(std::function<void()> handler) {
    calls_.emplace_back("set invalidation handler");
    invalidationHandler = std::move(handler);
}

void FakeConnection::setInterruptionHandler(std::function<void()> handler) {
    calls_.emplace_back("set interruption handler");
    interruptionHandler = std::move(handler);
}

void FakeConnection::resume() {
    calls_.push_back("resume " + service_);
}

void FakeConnection::invalidate() {
    calls_.push_back("invalidate " + service_);
    isInvalidated = true;
}

std::shared_ptr<Platform::XPCObject> FakeConnection::remoteObjectProxy() {
    calls_.emplace_back("proxy");
    if (!remoteInterface) {
        return nullptr;
    }
    return std::make_shared<FakeRemoteObject>(
        protocolOfProxy.value_or(std::string(remoteInterface->protocolName)), answer_);
}

std::shared_ptr<Platform::XPCObject> FakeConnection::synchronousRemoteObjectProxy(
    std::function<void(const Platform::Error&)> failed) {
    calls_.emplace_back("synchronous proxy");
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
    calls_.push_back("register " + std::to_string(classes.objects.size()) + " classes");
}

std::shared_ptr<Platform::XPCConnection> FakeXPC::makeConnection(const std::string& machServiceName,
                                                                 std::uint32_t options) {
    calls_.push_back("connection " + machServiceName + " " + std::to_string(options));
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
    calls_.push_back("listen " + machServiceName);
    requirements = clientRequirements;
    return std::move(listener);
}

}  // namespace TestSupport
