#include "SystemDoubles.h"

#include <Block.h>
#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <algorithm>
#include <utility>

#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/Darwin/XPC/DarwinXPCConnection.h"
#import "Platform/Darwin/XPC/ProtocolBridge.h"

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
    ++resumed;
}

- (void)invalidate {
    ++invalidated;
}

- (void)dealloc {
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
    const Pool pool;
    port.reset();
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

}  // namespace SystemDoubles
