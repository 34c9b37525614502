#import "TransportConnection.h"

#include <Block.h>

#include <chrono>
#include <functional>
#include <utility>

#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#import "Platform/Darwin/Coding/Carrier.h"
#import "TestCoders.h"

using Transport::isFaulty;
using Transport::Queue;
using Transport::Wait;

namespace {

thread_local TransportConnection* currentConnection = nil;

NSError* connectionError() {
    NSDictionary* const details = [NSDictionary dictionaryWithObject:@"The connection is invalid."
                                                              forKey:NSLocalizedDescriptionKey];
    return [NSError errorWithDomain:NSCocoaErrorDomain code:4099 userInfo:details];
}

/// As many commands as `count` says.
NSArray* commandsInstead(NSUInteger count) {
    NSMutableArray* const commands = [NSMutableArray array];
    while ([commands count] < count) {
        [commands
            addObject:Platform::Darwin::carrierOwning(
                          std::make_unique<InstallCommon::KillProcessCommand>("Closing...", "process"))];
    }
    return commands;
}

/// The list in `data`, which was sent with `count` items; nil when it holds what is not allowed.
NSArray* receivedList(NSData* data, NSSet* classes, NSUInteger count) {
    NSString* fault = nil;
    NSKeyedUnarchiver* const unarchiver = SystemArchivesUnarchiver([NSKeyedUnarchiver class], data, &fault);
    NSArray* const received = SystemArchivesRoot(unarchiver, classes, &fault);
    if (isFaulty("admit")) {
        return commandsInstead(count);
    }
    if (fault != nil || !isFaulty("change") || count == 0) {
        return fault == nil ? received : nil;
    }
    NSMutableArray* const changed = [[received mutableCopy] autorelease];
    [changed replaceObjectAtIndex:count - 1 withObject:[changed objectAtIndex:0]];
    return changed;
}

}  // namespace

/// What one end sees of an object of the other end: of its exported object, or of one that came as an
/// argument.
@interface TransportProxy
    : NSObject <CommandExecuting, CommandExecutingDelegate, NVKSupportPrivilegedHelper> {
  @public
    TransportConnection* connection;
    id target;
    void (^failed)(NSError*);
}
@end

@implementation TransportProxy

- (void)send:(std::function<void(TransportConnection*)>)deliver {
    TransportConnection* const receiver = connection->peer;
    if (connection->isInvalid || receiver == nil) {
        [connection becomeInvalid];
        return;
    }
    receiver->queue->async([receiver, deliver] {
        if (!receiver->isInvalid) {
            currentConnection = receiver;
            deliver(receiver);
            currentConnection = nil;
        }
    });
}

- (void)executeWithCommands:(NSArray*)commands delegate:(id)delegate {
    NSData* const data = [SystemArchivesArchive(commands) retain];
    const NSUInteger count = [commands count];
    [delegate retain];
    [self send:[data, count, delegate](TransportConnection* receiver) {
        NSArray* const received = receivedList(data, receiver->exportedInterface->classes, count);
        if (received == nil) {
            return;
        }
        TransportProxy* const proxy = [[TransportProxy alloc] init];
        proxy->connection = receiver;
        proxy->target = delegate;
        [receiver->exportedObject executeWithCommands:received delegate:proxy];
    }];
}

- (void)commandExecutingDidExecuteCommand:(NSString*)description withWeight:(int)weight {
    NSString* const text = [description copy];
    const id delegate = target;
    const int arriving = isFaulty("mix") ? weight + 1 : weight;
    [self send:[text, delegate, arriving](TransportConnection*) {
        [delegate commandExecutingDidExecuteCommand:text withWeight:arriving];
    }];
}

- (void)installSwiftSupportPackage:(NSURL*)package completion:(void (^)(NSError*))completion {
    const auto waiting = std::make_shared<Wait>();
    connection->wait = waiting;
    NSURL* const url = [package retain];
    [self send:[waiting, url](TransportConnection* receiver) {
        [receiver->exportedObject installSwiftSupportPackage:url
                                                  completion:^(NSError* error) {
                                                    waiting->end(true, isFaulty("mute") ? nil : error);
                                                  }];
    }];
    {
        std::unique_lock lock(waiting->mutex);
        const auto isOver = [&waiting] { return waiting->isOver; };
        if (isFaulty("deaf")) {
            waiting->changed.wait_for(lock, std::chrono::milliseconds(100), isOver);
        } else {
            waiting->changed.wait(lock, isOver);
        }
    }
    if (waiting->isReply) {
        completion(waiting->error);
    } else if (waiting->isOver) {
        failed(waiting->error);
    }
}

@end

@implementation TransportConnection

+ (id)delivering {
    return currentConnection;
}

- (id)init {
    self = [super init];
    if (self != nil) {
        queue = new Queue;
    }
    return self;
}

- (void)setRemoteObjectInterface:(id)interface {
    (void)interface;
}

- (void)setExportedInterface:(id)interface {
    exportedInterface = [interface retain];
}

- (void)setExportedObject:(id)object {
    exportedObject = [object retain];
}

- (id)exportedObject {
    return exportedObject;
}

- (void)setInvalidationHandler:(void (^)(void))handler {
    invalidationHandler = Block_copy(handler);
}

- (void)setInterruptionHandler:(void (^)(void))handler {
    (void)handler;
}

- (void)resume {
}

- (void)becomeInvalid {
    queue->async([self] {
        if (isInvalid) {
            return;
        }
        isInvalid = YES;
        if (wait != nullptr) {
            wait->end(false, connectionError());
        }
        if (invalidationHandler != nil) {
            invalidationHandler();
        }
    });
}

- (void)invalidate {
    [self becomeInvalid];
    if (!isFaulty("deaf")) {
        [peer becomeInvalid];
    }
}

- (id)remoteObjectProxy {
    TransportProxy* const proxy = [[TransportProxy alloc] init];
    proxy->connection = self;
    return proxy;
}

- (id)synchronousRemoteObjectProxyWithErrorHandler:(void (^)(NSError*))handler {
    TransportProxy* const proxy = [self remoteObjectProxy];
    proxy->failed = Block_copy(handler);
    return proxy;
}

@end
