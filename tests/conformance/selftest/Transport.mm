// Connections between two ends of one process, in the place of the system's classes, which GNUstep declares
// and does not implement. They carry messages as the system is understood to: archived by one end, decoded by
// the other with the classes that its interface allows, on a queue of its own. SELFTEST_FAULT in the
// environment has them make one mistake:
//
//  - admit: what is no command arrives as one
//  - change: the last command of a list arrives as the first
//  - crash: the process ends when it connects
//  - deaf: a connection that ends does not tell its peer
//  - mix: a report arrives with another weight
//  - mute: an error in a reply is lost

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include "Base/FatalError.h"
#import "TransportConnection.h"

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
    if (Transport::isFaulty("crash")) {
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
    return [TransportConnection delivering];
}

void replaceClassMethod(Class target, SEL selector, IMP implementation) {
    class_replaceMethod(object_getClass(target), selector, implementation, "@@:@");
}

IMP implementationOf(Class source, SEL selector) {
    return method_getImplementation(class_getClassMethod(source, selector));
}

}  // namespace

/// Before main has run anything that makes a connection. Only classes of this source are sure to be loaded.
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
