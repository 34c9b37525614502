#pragma once

#import <Foundation/Foundation.h>

namespace Platform::Darwin {

/// Foundation's bundle for the folder at `location`, autoreleased; nil if there is none, or no location.
inline NSBundle* foundationBundle(NSURL* location) {
    if (location == nil) {
        return nil;
    }
#ifdef GNUSTEP
    // GNUstep's bundles have Resources on top. A bundle of a Mac's layout is one of those from Contents on.
    NSBundle* const contents = [NSBundle bundleWithURL:[location URLByAppendingPathComponent:@"Contents"
                                                                                 isDirectory:YES]];
    if (contents != nil) {
        return contents;
    }
#endif
    return [NSBundle bundleWithURL:location];
}

}  // namespace Platform::Darwin
