#pragma once

// SecurityFoundation's authorization class: the system's own header, or the operations in use where there is
// none.
#if __has_include(<SecurityFoundation/SFAuthorization.h>)
#import <SecurityFoundation/SFAuthorization.h>
#else

#import <Foundation/Foundation.h>

#include <Security/Authorization.h>

@interface SFAuthorization : NSObject

/// A new session without rights.
- (instancetype)init;

/// The session's reference, which stays its own.
- (AuthorizationRef)authorizationRef;

/// Obtains `rights`. `authorizedRights` and `error` may be null.
- (BOOL)obtainWithRights:(const AuthorizationRights*)rights
                   flags:(AuthorizationFlags)flags
             environment:(const AuthorizationEnvironment*)environment
        authorizedRights:(AuthorizationRights**)authorizedRights
                   error:(NSError**)error;

@end

#endif
