#pragma once

#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Runs `work` with `context`, with an autorelease pool around it, and stops any Objective-C exception that
/// comes out of either. Returns 1 if there was none. Otherwise returns 0 and, if `reason` is not null, sets
/// it to the first one's reason, which the caller releases. No C++ exception may come out of `work`. C++
/// objects inside `work` are destroyed either way.
int PlatformRunGuarded(void (*work)(void* context), void* context, NSString** reason);

#ifdef __cplusplus
}

namespace Platform::Foundation {

/// The same for something callable.
template <class Work>
bool runGuarded(Work work, NSString** reason = nullptr) {
    return PlatformRunGuarded([](void* context) { (*static_cast<Work*>(context))(); }, &work, reason) == 1;
}

}  // namespace Platform::Foundation
#endif
