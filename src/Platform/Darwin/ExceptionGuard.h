#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// Runs `work` with `context` and catches an Objective-C exception that comes out of it, with an autorelease
/// pool around both. Returns 1 when it ended by itself, 0 when an exception was caught, which is dropped. No
/// C++ exception may come out of `work`. C++ objects inside `work` are destroyed either way.
int PlatformDarwinRunGuarded(void (*work)(void* context), void* context);

#ifdef __cplusplus
}

namespace Platform::Darwin {

/// The same for something callable.
template <class Work>
[[nodiscard]] bool runGuarded(Work work) {
    return PlatformDarwinRunGuarded([](void* context) { (*static_cast<Work*>(context))(); }, &work) == 1;
}

}  // namespace Platform::Darwin
#endif
