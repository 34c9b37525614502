#pragma once

// GCC's Objective-C runtime has no blocks, so it lacks the header that GNUstep asks for.

#ifdef __cplusplus
extern "C" {
#endif

void* _Block_copy(const void* block);
void _Block_release(const void* block);

#ifdef __cplusplus
}
#endif
