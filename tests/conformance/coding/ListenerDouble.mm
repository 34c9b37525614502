#include "ListenerDouble.h"

#include <Block.h>
#import <Foundation/Foundation.h>
#import <objc/runtime.h>
#include <unistd.h>
#include <xpc/xpc.h>

#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "Litter.h"
#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/Darwin/XPC/DarwinXPCListener.h"
#import "Platform/Darwin/XPC/PeerIdentity.h"

using Platform::Darwin::Pool;

namespace {

/// Of the listener that is being tested.
struct Visit {
    const ListenerDouble* world = nullptr;
    std::string serviceName;
    std::thread peer;
    /// The peer's thread while it asks to be admitted.
    std::atomic<pid_t> asking = 0;
    std::atomic<bool> isAdmitted = false;
    std::atomic<int> connectionsResumed = 0;
    int resumed = 0;
    int suspended = 0;
};

Visit* visit = nullptr;
std::atomic<int> openTransactions = 0;

}  // namespace

/// The peer's connection.
@interface VisitorConnection : NSObject {
    void (^invalidationHandler_)(void);
}
- (void)leave;
@end

@implementation VisitorConnection

- (int)processIdentifier {
    return 7;
}

- (unsigned)effectiveUserIdentifier {
    return 501;
}

- (void)setInvalidationHandler:(void (^)(void))handler {
    invalidationHandler_ = Block_copy(handler);
}

- (void)setInterruptionHandler:(void (^)(void))handler {
    (void)handler;
}

- (void)resume {
    Litter::leave();
    ++visit->connectionsResumed;
}

- (void)leave {
    invalidationHandler_();
}

- (void)dealloc {
    if (invalidationHandler_ != nullptr) {
        Block_release(invalidationHandler_);
    }
    [super dealloc];
}

@end

@interface SystemListenerDouble : NSObject {
    id delegate_;
}
- (id)initWithServiceName:(NSString*)name;
@end

namespace {

/// Whether a thread of this process waits for another one, or has ended.
bool isAsleep(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string facts;
    std::getline(file, facts);
    const std::size_t name = facts.rfind(") ");
    return name == std::string::npos || facts[name + 2] == 'S';
}

/// Listeners are not released, and their delegates live as long.
std::vector<id>& kept() {
    static auto* const listeners = new std::vector<id>;
    return *listeners;
}

void comeAndGo(id delegate) {
    const Pool pool;
    VisitorConnection* const connection = [[[VisitorConnection alloc] init] autorelease];
    visit->asking = ::gettid();
    visit->isAdmitted = [delegate listener:nil
                            shouldAcceptNewConnection:reinterpret_cast<NSXPCConnection*>(connection)] == YES;
    if (visit->isAdmitted) {
        [connection leave];
    }
}

}  // namespace

@implementation SystemListenerDouble

- (id)initWithServiceName:(NSString*)name {
    self = [super init];
    visit->serviceName = [name UTF8String];
    kept().push_back(self);
    return self;
}

- (void)setDelegate:(id)delegate {
    delegate_ = delegate;
}

- (void)resume {
    Litter::leave();
    if (++visit->resumed == 1) {
        visit->peer = std::thread(comeAndGo, delegate_);
        // The system's queue does not wait for the thread that resumes: the peer knocks before that serves.
        while (visit->asking == 0 || !isAsleep(visit->asking)) {
            std::this_thread::yield();
        }
    }
}

- (void)suspend {
    Litter::leave();
    ++visit->suspended;
}

@end

namespace {

/// In the place of the initializer of the system's listener.
id makeDouble(id listener, SEL /*selector*/, NSString* name) {
    [listener release];
    return [[SystemListenerDouble alloc] initWithServiceName:name];
}

}  // namespace

extern "C" void xpc_transaction_begin(void) {
    ++openTransactions;
}

extern "C" void xpc_transaction_end(void) {
    --openTransactions;
}

namespace Platform::Darwin {

std::optional<std::string> refusalOfPeer(NSXPCConnection* /*connection*/,
                                         const std::vector<std::string>& /*requirements*/) {
    return visit->world->refusal;
}

}  // namespace Platform::Darwin

ListenerDouble::ListenerDouble() {
    const Pool pool;
    visit = new Visit;
    visit->world = this;
    const SEL selector = @selector(initWithMachServiceName:);
    class_replaceMethod([NSXPCListener class], selector, reinterpret_cast<IMP>(makeDouble), "@@:@");
    listener_ = std::make_unique<Platform::Darwin::DarwinXPCListener>("com.norvik.InstallerHelper",
                                                                      std::vector<std::string>{});
}

ListenerDouble::~ListenerDouble() {
    if (visit->peer.joinable()) {
        visit->peer.join();
    }
    listener_.reset();
    delete visit;
    visit = nullptr;
}

std::string ListenerDouble::serviceName() const {
    return visit->serviceName;
}

bool ListenerDouble::isPeerAdmitted() const {
    visit->peer.join();
    return visit->isAdmitted;
}

int ListenerDouble::connectionsResumed() const {
    return visit->connectionsResumed;
}

int ListenerDouble::resumed() const {
    return visit->resumed;
}

int ListenerDouble::suspended() const {
    return visit->suspended;
}

int ListenerDouble::transactions() {
    return openTransactions;
}
