#include "BridgeLoop.h"

#import <Foundation/Foundation.h>

#include "Platform/Darwin/FoundationBridge.h"
#import "Platform/Darwin/XPC/Exporter.h"
#import "Platform/Darwin/XPC/ProtocolBridge.h"
#include "Platform/Darwin/XPC/RemoteObject.h"

static int invalidations = 0;

/// The connection that a message comes over.
@interface CountingConnection : NSObject
- (void)invalidate;
@end

@implementation CountingConnection

- (void)invalidate {
    ++invalidations;
}

@end

// Methods that GNUstep's class does not implement.
@implementation NSXPCConnection (DeclaredByApple)

+ (NSXPCConnection*)currentConnection {
    static CountingConnection* const connection = [CountingConnection new];
    return reinterpret_cast<NSXPCConnection*>(connection);
}

- (id)exportedObject {
    return nil;
}

- (void)setExportedInterface:(NSXPCInterface*)exportedInterface {
    (void)exportedInterface;
}

- (void)setExportedObject:(id)exportedObject {
    (void)exportedObject;
}

@end

using Platform::Darwin::Pool;

BridgeLoop::BridgeLoop(std::shared_ptr<Platform::XPCObject> object, const Platform::XPCInterface& interface)
    : interface_(std::make_shared<const Platform::XPCInterface>(interface)),
      refusals_(std::make_shared<std::vector<std::string>>()),
      invalidationsBefore_(::invalidations) {
    const Pool pool;
    exporter_ = [Platform::Darwin::exporterOf(
        std::move(object), interface_,
        [refusals = refusals_](const std::string& why) { refusals->push_back(why); }) retain];
}

BridgeLoop::~BridgeLoop() {
    const Pool pool;
    [static_cast<id>(exporter_) release];
}

std::shared_ptr<Platform::XPCObject> BridgeLoop::proxy() const {
    return std::make_shared<Platform::Darwin::RemoteObject>(static_cast<id>(exporter_), interface_);
}

void BridgeLoop::send(Foreign message) const {
    const Pool pool;
    const id target = static_cast<id>(exporter_);
    void (^const completion)(NSError*) = ^(NSError* error) {
      (void)error;
    };
    switch (message) {
        case Foreign::noCommands:
            [target executeWithCommands:nil delegate:target];
            return;
        case Foreign::stringsAsCommands:
            [target executeWithCommands:[NSArray arrayWithObject:@"rm"] delegate:target];
            return;
        case Foreign::noDelegate:
            [target executeWithCommands:[NSArray array] delegate:nil];
            return;
        case Foreign::noText:
            [target commandExecutingDidExecuteCommand:nil withWeight:1];
            return;
        case Foreign::noURL:
            [target installSwiftSupportPackage:nil completion:completion];
            return;
        case Foreign::webURL:
            [target installSwiftSupportPackage:[NSURL URLWithString:@"http://host/a.pkg"]
                                    completion:completion];
            return;
    }
}

int BridgeLoop::invalidations() const {
    return ::invalidations - invalidationsBefore_;
}
