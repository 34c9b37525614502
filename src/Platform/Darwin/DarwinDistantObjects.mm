#include "Platform/Darwin/DarwinDistantObjects.h"

#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/Foundation/ExceptionGuard.h"

// Distant objects are the daemon's interface; there is no newer one to it. (Clang knows this form too.)
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace Platform::Darwin {

namespace {

class ConnectedProxy final : public DistantObject {
  public:
    ConnectedProxy(Retained<NSDistantObject*> proxy, Retained<NSConnection*> connection)
        : proxy_(std::move(proxy)), connection_(std::move(connection)) {}
    ConnectedProxy(const ConnectedProxy&) = delete;
    ConnectedProxy& operator=(const ConnectedProxy&) = delete;
    ~ConnectedProxy() override {
        // Letting go of a proxy tells the other process so.
        NSDistantObject* const proxy = proxy_.yield();
        NSConnection* const connection = connection_.yield();
        Foundation::runGuarded([=] { [proxy release]; });
        Foundation::runGuarded([=] { [connection release]; });
    }

    bool isConnectionValid() const override {
        return holds([this] { return [connection_.get() isValid]; });
    }
    bool isSendPortValid() const override {
        return holds([this] { return [[connection_.get() sendPort] isValid]; });
    }
    bool isReceivePortValid() const override {
        return holds([this] { return [[connection_.get() receivePort] isValid]; });
    }
    void addCommonRequestModes() override {
        Foundation::runGuarded([this] { [connection_.get() addRequestMode:NSRunLoopCommonModes]; });
    }

  private:
    template <class Question>
    [[nodiscard]] static bool holds(Question question) {
        bool answer = false;
        const bool answered = Foundation::runGuarded([&] { answer = question() == YES; });
        return answered && answer;
    }

    Retained<NSDistantObject*> proxy_;
    Retained<NSConnection*> connection_;
};

}  // namespace

std::shared_ptr<DistantObject> DarwinDistantObjects::rootProxy(const std::string& name) {
    Retained<NSDistantObject*> proxy;
    Retained<NSConnection*> connection;
    const bool answered = Foundation::runGuarded([&] {
        NSDistantObject* const found =
            [NSConnection rootProxyForConnectionWithRegisteredName:foundationString(name) host:nil];
        connection = Retained<NSConnection*>::of([found connectionForProxy]);
        proxy = Retained<NSDistantObject*>::of(found);
    });
    if (!answered || !proxy || !connection) {
        return nullptr;
    }
    return std::make_shared<ConnectedProxy>(std::move(proxy), std::move(connection));
}

}  // namespace Platform::Darwin
