#pragma once

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The caller's graphical session, owned by the caller; null outside of one.
CFDictionaryRef CGSessionCopyCurrentDictionary(void);

#ifdef __cplusplus
}
#endif
