#include "Platform/Darwin/XPC/DarwinXPCListener.h"

#include <xpc/xpc.h>

#include <utility>

#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/Darwin/XPC/DarwinXPCConnection.h"
#import "Platform/Darwin/XPC/PeerIdentity.h"

@interface PlatformDarwinListenerDelegate : NSObject <NSXPCListenerDelegate> {
  @private
    std::shared_ptr<Platform::Darwin::ListenerDoor> door_;
}
- (id)initWithDoor:(std::shared_ptr<Platform::Darwin::ListenerDoor>)door;
@end

@implementation PlatformDarwinListenerDelegate

- (id)initWithDoor:(std::shared_ptr<Platform::Darwin::ListenerDoor>)door {
    self = [super init];
    if (self != nil) {
        door_ = std::move(door);
    }
    return self;
}

- (BOOL)listener:(NSXPCListener*)listener shouldAcceptNewConnection:(NSXPCConnection*)connection {
    (void)listener;
    return door_->knock(connection) ? YES : NO;
}

@end

namespace Platform::Darwin {

DarwinXPCListener::DarwinXPCListener(const std::string& machServiceName,
                                     std::vector<std::string> clientRequirements)
    : clientRequirements_(std::move(clientRequirements)), door_(std::make_shared<ListenerDoor>()) {
    const Pool pool;
    // Neither is ever released: a suspended listener must not be, and resuming it would take a peer's
    // connection only to drop it.
    listener_ = [[NSXPCListener alloc] initWithMachServiceName:foundationString(machServiceName)];
    [listener_ setDelegate:[[PlatformDarwinListenerDelegate alloc] initWithDoor:door_]];
}

std::shared_ptr<void> DarwinXPCListener::transaction() {
    xpc_transaction_begin();
    door_->begin(ListenerDoor::Work::transaction);
    return {door_.get(), [door = door_](void*) {
                door->end(ListenerDoor::Work::transaction);
                xpc_transaction_end();
            }};
}

void DarwinXPCListener::resumeListener() {
    const Pool pool;
    [listener_ resume];
}

void DarwinXPCListener::suspendListener() {
    const Pool pool;
    [listener_ suspend];
}

void DarwinXPCListener::run(const Accept& accept, const Refused& refused, std::uint32_t idleSeconds) {
    const auto admitOne = [&](void* connection) {
        return admit(static_cast<NSXPCConnection*>(connection), accept, refused);
    };
    do {
        door_->open();
        resumeListener();
        door_->serve(admitOne, std::chrono::seconds(idleSeconds));
        suspendListener();
    } while (!door_->shut());
}

bool DarwinXPCListener::admit(NSXPCConnection* connection, const Accept& accept, const Refused& refused) {
    const Pool pool;
    const XPCPeer peer{[connection processIdentifier], [connection effectiveUserIdentifier]};
    const std::string name = "process " + std::to_string(peer.pid) + " of user " + std::to_string(peer.uid);
    if (const std::optional<std::string> why = refusalOfPeer(connection, clientRequirements_)) {
        refused(name + ": " + *why);
        return false;
    }
    door_->begin(ListenerDoor::Work::connection);
    std::shared_ptr<void> inUse(door_.get(),
                                [door = door_](void*) { door->end(ListenerDoor::Work::connection); });
    const auto taken = std::make_shared<DarwinXPCConnection>(
        connection, std::move(inUse),
        [refused, name](const std::string& why) { refused(name + ": " + why); });
    if (!accept(taken, peer)) {
        refused(name + ": the service does not take it");
        return false;
    }
    taken->resume();
    return true;
}

}  // namespace Platform::Darwin
