#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Calls body(context) inside an autorelease pool and stops any Objective-C exception. Returns whether body
/// came to its end; if not, and `reason` is not null, `reason` is set to the reason, which the caller
/// releases. In its own file because catching does not mix with C++ in one.
BOOL SNTCallGuarded(void (*body)(void*), void* context, NSString** reason);

#ifdef __cplusplus
}

namespace Uninstall_Sentrel {

/// SNTCallGuarded for any callable.
template <typename Body>
BOOL guarded(Body body, NSString** reason = nullptr) {
    return SNTCallGuarded([](void* context) { (*static_cast<Body*>(context))(); }, &body, reason);
}

}  // namespace Uninstall_Sentrel
#endif
