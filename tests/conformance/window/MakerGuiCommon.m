#import <Foundation/Foundation.h>
#include <stdlib.h>
#include <string.h>

/// Stands in for the maker's lock: it is on. MAKER_LOCK in the environment has it fail when it is made
/// ("absent", "raises").
@interface QVSParentalControlAuthorization : NSObject {
    BOOL authorized_;
}
- (BOOL)parentalControlAuthorized;
@end

@implementation QVSParentalControlAuthorization

- (id)init {
    const char* fault = getenv("MAKER_LOCK");
    if (fault != NULL && strcmp(fault, "raises") == 0) {
        [NSException raise:NSInternalInconsistencyException format:@"no lock"];
    }
    if ((self = [super init]) != nil && fault != NULL && strcmp(fault, "absent") == 0) {
        [self release];
        self = nil;
    }
    return self;
}

- (BOOL)parentalControlAuthorized {
    return authorized_;
}

@end
