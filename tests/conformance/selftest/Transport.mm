// Connections between two ends of one process, in the place of the system's classes, which GNUstep declares
// and does not implement. They carry messages as the system is understood to: archived by one end, decoded by
// the other with the classes that its interface allows, on a queue of its own. SELFTEST_FAULT in the
// environment has them make one mistake:
//
//   change    the last command of a list arrives as the first        mix     a report arrives with another
//   weight admit     what is no command arrives as one                      deaf    a connection that ends
//   does not tell its peer mute      an error in a reply is lost                          crash   the process
//   ends when it connects

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <Block.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>

#include "Base/FatalError.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#import "Platform/Darwin/Coding/Carrier.h"
#include "Platform/Darwin/FoundationBridge.h"
#import "Platform/Darwin/XPC/Protocols.h"
#import "TestCoders.h"

using Platform::Darwin::Pool;

namespace {

bool isFaulty(std::string_view fault) {
    const char* const chosen = std::getenv("SELFTEST_FAULT");
    return chosen != nullptr && fault == chosen;
}

/// Runs blocks one after another on a thread of its own, for the life of the process.
class Queue {
  public:
    Queue() {
        std::thread([this] { run(); }).detach();
    }
    void async(std::function<void()> block) {
        const std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
        changed_.notify_one();
    }

  private:
    [[noreturn]] void run() {
        for (;;) {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return !blocks_.empty(); });
            const std::function<void()> block = std::move(blocks_.front());
            blocks_.pop_front();
            lock.unlock();
            const Pool pool;
            block();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> blocks_;
};

/// A reply that a synchronous call waits for. Only the first thing that happens counts.
struct Wait {
    std::mutex mutex;
    std::condition_variable changed;
    bool isOver = false;
    bool isReply = false;
    NSError* error = nil;

    void end(bool reply, NSError* withError) {
        const std::lock_guard lock(mutex);
        if (!isOver) {
            isOver = true;
            isReply = reply;
            error = [withError retain];
            changed.notify_all();
        }
    }
};

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

@class TransportConnection;

static thread_local TransportConnection* currentConnection = nil;

@interface TransportInterface : NSObject {
  @public
    NSSet* classes;
}
@end

@implementation TransportInterface

+ (id)interfaceWithProtocol:(Protocol*)protocol {
    (void)protocol;
    return [[TransportInterface alloc] init];
}

- (void)setClasses:(NSSet*)allowed
       forSelector:(SEL)selector
     argumentIndex:(NSUInteger)index
           ofReply:(BOOL)ofReply {
    (void)selector;
    (void)index;
    (void)ofReply;
    classes = [allowed retain];
}

- (void)setInterface:(id)interface
         forSelector:(SEL)selector
       argumentIndex:(NSUInteger)index
             ofReply:(BOOL)ofReply {
    (void)interface;
    (void)selector;
    (void)index;
    (void)ofReply;
}

@end

/// One end. Ends are never released: threads refer to them.
@interface TransportConnection : NSObject {
  @public
    TransportConnection* peer;
    Queue* queue;
    id exportedObject;
    TransportInterface* exportedInterface;
    void (^invalidationHandler)(void);
    std::shared_ptr<Wait> wait;
    BOOL isInvalid;
}
- (void)becomeInvalid;
@end

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

/// The listener and its endpoint in one.
@interface TransportListener : NSObject {
  @public
    id delegate;
    BOOL isGone;
}
@end

@implementation TransportListener

- (void)setDelegate:(id)newDelegate {
    delegate = [newDelegate retain];
}

- (void)resume {
}

- (id)endpoint {
    return self;
}

- (void)invalidate {
    isGone = YES;
}

+ (id)anonymousListener {
    return [[TransportListener alloc] init];
}

@end

namespace {

/// In the place of the initializer of the system's connection.
id connectTo(id connection, SEL /*selector*/, id endpoint) {
    [connection release];
    if (isFaulty("crash")) {
        Base::fatalError("SELFTEST_FAULT asks for it.");
    }
    TransportListener* const listener = endpoint;
    TransportConnection* const client = [[TransportConnection alloc] init];
    if (!listener->isGone) {
        TransportConnection* const service = [[TransportConnection alloc] init];
        client->peer = service;
        service->peer = client;
        // The first thing on the queue, before any message.
        service->queue->async([listener, service] {
            static_cast<void>([listener->delegate listener:nil
                                 shouldAcceptNewConnection:reinterpret_cast<NSXPCConnection*>(service)]);
        });
    }
    return client;
}

id current(id /*class*/, SEL /*selector*/) {
    return currentConnection;
}

void replaceClassMethod(Class target, SEL selector, IMP implementation) {
    class_replaceMethod(object_getClass(target), selector, implementation, "@@:@");
}

IMP implementationOf(Class source, SEL selector) {
    return method_getImplementation(class_getClassMethod(source, selector));
}

}  // namespace

/// Before main has run anything that makes a connection.
@interface TransportInstaller : NSObject
@end

@implementation TransportInstaller

+ (void)load {
    class_replaceMethod([NSXPCConnection class], @selector(initWithListenerEndpoint:),
                        reinterpret_cast<IMP>(connectTo), "@@:@");
    replaceClassMethod([NSXPCConnection class], @selector(currentConnection), reinterpret_cast<IMP>(current));
    replaceClassMethod([NSXPCListener class], @selector(anonymousListener),
                       implementationOf([TransportListener class], @selector(anonymousListener)));
    replaceClassMethod([NSXPCInterface class], @selector(interfaceWithProtocol:),
                       implementationOf([TransportInterface class], @selector(interfaceWithProtocol:)));
}

@end
