// A plain Objective-C file: C++ and Objective-C exceptions do not meet in one.
#include "Platform/Darwin/ExceptionGuard.h"

#import <Foundation/Foundation.h>

int PlatformDarwinRunGuarded(void (*work)(void* context), void* context) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    int ended = 0;
    @try {
        work(context);
        ended = 1;
    } @catch (id exception) {
        (void)exception;
    }
    // What the pool lets go of may raise as well.
    @
    try {
        [pool release];
    } @catch (id exception) {
        (void)exception;
        ended = 0;
    }
    return ended;
}
