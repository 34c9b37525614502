#import "Loopback.h"

#include <utility>

#include "Platform/Darwin/XPC/DarwinXPCConnection.h"
#import "Platform/Darwin/XPC/ProtocolBridge.h"

using Platform::Darwin::DarwinXPCConnection;
using Platform::Darwin::Pool;
using Platform::Darwin::Retained;

@interface SelftestListenerDelegate : NSObject <NSXPCListenerDelegate> {
  @private
    std::shared_ptr<Selftest::Events> events_;
    Selftest::Loopback::Accept accept_;
}
- (id)initWithEvents:(std::shared_ptr<Selftest::Events>)events accept:(Selftest::Loopback::Accept)accept;
@end

@implementation SelftestListenerDelegate

- (id)initWithEvents:(std::shared_ptr<Selftest::Events>)events accept:(Selftest::Loopback::Accept)accept {
    self = [super init];
    if (self != nil) {
        events_ = std::move(events);
        accept_ = std::move(accept);
    }
    return self;
}

- (BOOL)listener:(NSXPCListener*)listener shouldAcceptNewConnection:(NSXPCConnection*)connection {
    (void)listener;
    const std::shared_ptr<Selftest::Events> events = events_;
    std::shared_ptr<void> inUse(events.get(), [events](void*) { events->add("service: released"); });
    const auto taken = std::make_shared<DarwinXPCConnection>(
        connection, std::move(inUse),
        [events](const std::string& why) { events->add("service: refused: " + why); });
    taken->setInvalidationHandler([events] { events->add("service: invalid"); });
    accept_(connection, taken);
    taken->resume();
    return YES;
}

@end

namespace Selftest {

Loopback::Loopback(std::shared_ptr<Events> events, Accept accept) : events_(std::move(events)) {
    const Pool pool;
    delegate_ = Retained<SelftestListenerDelegate*>::adopt(
        [[SelftestListenerDelegate alloc] initWithEvents:events_ accept:std::move(accept)]);
    listener_ = Retained<NSXPCListener*>::of([NSXPCListener anonymousListener]);
    [listener_.get() setDelegate:delegate_.get()];
    [listener_.get() resume];
    endpoint_ = Retained<NSXPCListenerEndpoint*>::of([listener_.get() endpoint]);
}

Loopback::~Loopback() {
    close();
}

void Loopback::close() {
    const Pool pool;
    [listener_.get() invalidate];
}

NSXPCConnection* Loopback::newNativeClient() const {
    return [[NSXPCConnection alloc] initWithListenerEndpoint:endpoint_.get()];
}

std::shared_ptr<Platform::XPCConnection> Loopback::makeClient(Platform::XPCInterface remote) {
    const Pool pool;
    const auto native = Retained<NSXPCConnection*>::adopt(newNativeClient());
    auto client = std::make_shared<DarwinXPCConnection>(native.get(), nullptr,
                                                        std::function<void(const std::string&)>());
    client->setRemoteObjectInterface(std::move(remote));
    const std::shared_ptr<Events> events = events_;
    client->setInvalidationHandler([events] { events->add("client: invalid"); });
    client->setInterruptionHandler([events] { events->add("client: interrupted"); });
    return client;
}

NSXPCConnection* Loopback::makeForeignClient(const Platform::XPCInterface& remote) {
    NSXPCConnection* const native = [newNativeClient() autorelease];
    [native setRemoteObjectInterface:Platform::Darwin::systemInterface(remote)];
    const std::shared_ptr<Events> events = events_;
    [native setInvalidationHandler:^{
      events->add("client: invalid");
    }];
    [native setInterruptionHandler:^{
      events->add("client: interrupted");
    }];
    [native resume];
    return native;
}

}  // namespace Selftest
