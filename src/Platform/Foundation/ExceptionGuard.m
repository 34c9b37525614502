// A plain Objective-C file: C++ and Objective-C exceptions do not meet in one.
#import "Platform/Foundation/ExceptionGuard.h"

/// The words of a raised object, which the caller releases.
static NSString* copyReason(id raised) {
    if (![raised isKindOfClass:[NSException class]]) {
        return [[raised description] copy];
    }
    NSString* const reason = [raised reason];
    return [reason != nil ? reason : [raised name] copy];
}

/// Returns whether `work` ended by itself; if not, sets `reason`, unless it is set.
static BOOL attempt(void (*work)(void* context), void* context, NSString** reason) {
    @try {
        work(context);
        return YES;
    } @catch (id raised) {
        if (*reason == nil) {
            *reason = copyReason(raised);
        }
    }
    return NO;
}

static void releasePool(void* pool) {
    [(NSAutoreleasePool*)pool release];
}

int PlatformRunGuarded(void (*work)(void* context), void* context, NSString** reason) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    NSString* raised = nil;
    const BOOL ended = attempt(work, context, &raised);
    // What the pool lets go of may raise as well.
    const BOOL released = attempt(releasePool, pool, &raised);
    if (reason != NULL) {
        *reason = raised;
    } else {
        [raised release];
    }
    return ended && released ? 1 : 0;
}
