#import "Uninstaller/AppKit/Guard.h"

BOOL SNTCallGuarded(void (*body)(void*), void* context, NSString** reason) {
    NSString* raised = nil;
    BOOL finished = NO;
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    @try {
        body(context);
        finished = YES;
    } @catch (NSException* exception) {
        raised = [[exception reason] copy];
        if (raised == nil) {
            raised = [[exception name] copy];
        }
    }
    [pool release];
    if (reason != NULL) {
        *reason = raised;
    } else {
        [raised release];
    }
    return finished;
}
