#include "SystemDoubles.h"

#include <Block.h>
#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <algorithm>
#include <utility>

#include "Litter.h"
#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/Darwin/XPC/DarwinXPC.h"
#include "Platform/Darwin/XPC/DarwinXPCConnection.h"
#import "Platform/Darwin/XPC/ProtocolBridge.h"
#import "Platform/Darwin/XPC/Protocols.h"

using Platform::Darwin::Pool;
using SystemDoubles::InterfaceRecord;

@interface InterfaceDouble : NSObject {
  @public
    InterfaceRecord* record;
}
@end

@implementation InterfaceDouble

+ (id)interfaceWithProtocol:(Protocol*)protocol {
    return [[[InterfaceDouble alloc] initWithProtocol:protocol] autorelease];
}

- (id)initWithProtocol:(Protocol*)protocol {
    self = [super init];
    if (self != nil) {
        record = new InterfaceRecord{protocol_getName(protocol), {}};
    }
    return self;
}

- (void)setClasses:(NSSet*)classes
       forSelector:(SEL)selector
     argumentIndex:(NSUInteger)index
           ofReply:(BOOL)ofReply {
    std::vector<std::string> names;
    NSArray* const all = [classes allObjects];
    for (NSUInteger i = 0; i < [all count]; ++i) {
        names.emplace_back(class_getName([all objectAtIndex:i]));
    }
    std::sort(names.begin(), names.end());
    record->arguments.push_back(
        {sel_getName(selector), static_cast<unsigned>(index), ofReply != NO, std::move(names), {}});
}

- (void)setInterface:(InterfaceDouble*)interface
         forSelector:(SEL)selector
       argumentIndex:(NSUInteger)index
             ofReply:(BOOL)ofReply {
    record->arguments.push_back(
        {sel_getName(selector), static_cast<unsigned>(index), ofReply != NO, {}, {*interface->record}});
}

- (void)dealloc {
    delete record;
    [super dealloc];
}

@end

/// What a proxy of the system's leaves behind.
@interface ProxyDouble : NSObject <NVKSupportPrivilegedHelper>
@end

@implementation ProxyDouble

- (void)installSwiftSupportPackage:(NSURL*)package completion:(void (^)(NSError*))completion {
    (void)package;
    Litter::leave();
    completion(nil);
}

- (void)dealloc {
    Litter::leave();
    [super dealloc];
}

@end

@interface ConnectionDouble : NSObject {
  @public
    void (^invalidationHandler)(void);
    void (^interruptionHandler)(void);
    int resumed;
    int invalidated;
}
@end

@implementation ConnectionDouble

// Keeps its handlers after the last call, as the system may.
- (void)setInvalidationHandler:(void (^)(void))handler {
    invalidationHandler = Block_copy(handler);
}

- (void)setInterruptionHandler:(void (^)(void))handler {
    interruptionHandler = Block_copy(handler);
}

- (void)resume {
    Litter::leave();
    ++resumed;
}

- (void)invalidate {
    Litter::leave();
    ++invalidated;
}

- (id)remoteObjectProxy {
    Litter::leave();
    return [[[ProxyDouble alloc] init] autorelease];
}

- (id)synchronousRemoteObjectProxyWithErrorHandler:(void (^)(NSError*))handler {
    (void)handler;
    return [self remoteObjectProxy];
}

- (void)setRemoteObjectInterface:(NSXPCInterface*)interface {
    (void)interface;
    Litter::leave();
}

- (void)setExportedInterface:(NSXPCInterface*)interface {
    (void)interface;
    Litter::leave();
}

- (void)setExportedObject:(id)object {
    (void)object;
    Litter::leave();
}

- (void)dealloc {
    Litter::leave();
    Block_release(invalidationHandler);
    Block_release(interruptionHandler);
    [super dealloc];
}

@end

namespace SystemDoubles {

namespace {

/// In the place of GNUstep's own, which makes no interface.
void installInterfaceDouble() {
    const SEL selector = @selector(interfaceWithProtocol:);
    const Method method = class_getClassMethod([InterfaceDouble class], selector);
    class_replaceMethod(object_getClass([NSXPCInterface class]), selector, method_getImplementation(method),
                        method_getTypeEncoding(method));
}

ConnectionDouble* doubleOf(void* pointer) {
    return static_cast<ConnectionDouble*>(pointer);
}

/// In the place of the initializer of the system's connection.
id makeConnectionDouble(id connection, SEL /*selector*/, NSString* /*name*/, NSUInteger /*options*/) {
    [connection release];
    return [ConnectionDouble new];
}

}  // namespace

InterfaceRecord recordOf(const Platform::XPCInterface& interface) {
    const Pool pool;
    installInterfaceDouble();
    return *reinterpret_cast<InterfaceDouble*>(Platform::Darwin::systemInterface(interface))->record;
}

Connection::Connection(std::shared_ptr<void> inUse) : double_([ConnectionDouble new]) {
    port = std::make_shared<Platform::Darwin::DarwinXPCConnection>(
        static_cast<NSXPCConnection*>(double_), std::move(inUse), [](const std::string&) {});
}

Connection::~Connection() {
    port.reset();
    const Pool pool;
    [doubleOf(double_) release];
}

void Connection::invalidate() const {
    doubleOf(double_)->invalidationHandler();
}

void Connection::interrupt() const {
    doubleOf(double_)->interruptionHandler();
}

int Connection::resumed() const {
    return doubleOf(double_)->resumed;
}

int Connection::invalidated() const {
    return doubleOf(double_)->invalidated;
}

std::shared_ptr<Platform::XPCConnection> makeClient() {
    installInterfaceDouble();
    const SEL selector = @selector(initWithMachServiceName:options:);
    class_replaceMethod([NSXPCConnection class], selector, reinterpret_cast<IMP>(makeConnectionDouble),
                        "@@:@Q");
    return Platform::Darwin::DarwinXPC().makeConnection("com.norvik.InstallerHelper", 0);
}

Platform::XPCReply makeReply() {
    const Pool pool;
    const Platform::Darwin::Retained<id> kept = Platform::Darwin::Retained<id>::adopt([ProxyDouble new]);
    const id held = kept.get();
    return Platform::Darwin::replyOf(^(NSError* error) {
      (void)error;
      (void)held;
      Litter::leave();
    });
}

}  // namespace SystemDoubles
