#include "Platform/Darwin/FoundationError.h"

#include <cerrno>

namespace Platform::Darwin {

namespace {

int errnoOfCocoaCode(NSInteger code) {
    switch (code) {
        case NSFileNoSuchFileError:
        case NSFileReadNoSuchFileError:
            return ENOENT;
        case NSFileWriteFileExistsError:
            return EEXIST;
        case NSFileReadNoPermissionError:
        case NSFileWriteNoPermissionError:
            return EACCES;
        case NSFileWriteOutOfSpaceError:
            return ENOSPC;
        case NSFileReadInvalidFileNameError:
        case NSFileWriteInvalidFileNameError:
            return EINVAL;
        default:
            return EIO;
    }
}

}  // namespace

int errnoOf(NSError* error) {
    // Errors nest two or three deep; the bound is for one that goes round in circles.
    constexpr int kDeepest = 8;
    NSError* outermost = error;
    for (int depth = 0; error != nil && depth < kDeepest; ++depth) {
        if ([[error domain] isEqualToString:NSPOSIXErrorDomain] && [error code] > 0) {
            return static_cast<int>([error code]);
        }
        error = [[error userInfo] objectForKey:NSUnderlyingErrorKey];
    }
    const bool cocoa = [[outermost domain] isEqualToString:NSCocoaErrorDomain] == YES;
    return cocoa ? errnoOfCocoaCode([outermost code]) : EIO;
}

}  // namespace Platform::Darwin
