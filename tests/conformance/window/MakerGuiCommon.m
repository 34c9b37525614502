#import <Foundation/Foundation.h>

/// Stands in for the maker's lock: it is on.
@interface QVSParentalControlAuthorization : NSObject {
    BOOL authorized_;
}
- (BOOL)parentalControlAuthorized;
@end

@implementation QVSParentalControlAuthorization

- (BOOL)parentalControlAuthorized {
    return authorized_;
}

@end
