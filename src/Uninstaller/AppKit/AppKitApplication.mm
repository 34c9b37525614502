#include <utility>

#include "Platform/Foundation/ExceptionGuard.h"
#include "Uninstaller/AppKit/AppKitFramework.h"
#include "Uninstaller/AppKit/System.h"

/// A block on its way to the main thread.
@interface SNTMainThreadBlock : NSObject {
    // A std::function<void()>*: the runtime cannot describe the type.
    void* block_;
}
/// Takes over `block`, a std::function<void()>*.
- (id)initWithBlock:(void*)block;
- (void)perform:(id)sender;
@end

@implementation SNTMainThreadBlock

- (id)initWithBlock:(void*)block {
    self = [super init];
    if (self != nil) {
        block_ = block;
    }
    return self;
}

- (void)dealloc {
    delete static_cast<std::function<void()>*>(block_);
    [super dealloc];
}

- (void)perform:(id)sender {
    (void)sender;
    (*static_cast<std::function<void()>*>(block_))();
}

@end

namespace Uninstall_Sentrel {

using Platform::Foundation::runGuarded;

void AppKitApplication::activateIgnoringOtherApps() {
    runGuarded([] { [NSApp activateIgnoringOtherApps:YES]; });
}

void AppKitApplication::terminate() {
    runGuarded([] { [NSApp terminate:[NSApp delegate]]; });
}

void AppKitApplication::run() {
    runGuarded([] { [NSApp run]; });
}

void AppKitApplication::performOnMainQueue(std::function<void()> block) {
    const auto handOver = [](void* context) {
        runGuarded([context] {
            SNTMainThreadBlock* handedOver = [[SNTMainThreadBlock alloc]
                initWithBlock:new std::function<void()>(
                                  std::move(*static_cast<std::function<void()>*>(context)))];
            NSArray* modes = [NSArray arrayWithObjects:NSDefaultRunLoopMode, NSModalPanelRunLoopMode,
                                                       NSEventTrackingRunLoopMode, nil];
            [handedOver performSelectorOnMainThread:@selector(perform:)
                                         withObject:nil
                                      waitUntilDone:NO
                                              modes:modes];
            [handedOver release];
        });
    };
    SNTCallOnOwnThread(handOver, &block);
}

}  // namespace Uninstall_Sentrel
