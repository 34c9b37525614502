#pragma once

#import <Foundation/Foundation.h>

/// The words of an error of the system's, the same in every log line and every Error that has one: what "%@"
/// prints (-description), with domain, code and details, not the localized sentence alone, which names
/// neither and comes in the user's language. Nil for nil. Plain C, for the Objective-C files too.
static inline NSString* PlatformDarwinErrorText(NSError* error) {
    return [error description];
}
