#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#import "Platform/Darwin/XPC/Protocols.h"
#import "TransportQueue.h"

/// Knows the classes that its one list may hold. Implemented beside the installer.
@interface TransportInterface : NSObject {
  @public
    NSSet* classes;
}
@end

/// One end. Ends are never released: threads refer to them.
@interface TransportConnection : NSObject {
  @public
    TransportConnection* peer;
    Transport::Queue* queue;
    id exportedObject;
    TransportInterface* exportedInterface;
    void (^invalidationHandler)(void);
    std::shared_ptr<Transport::Wait> wait;
    BOOL isInvalid;
}
/// The connection whose message the calling thread delivers; nil outside of a delivery.
+ (id)delivering;
- (void)becomeInvalid;
@end
