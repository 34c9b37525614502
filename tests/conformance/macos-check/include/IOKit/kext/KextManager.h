#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <libkern/OSReturn.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Owned by the caller. */
CFDictionaryRef KextManagerCopyLoadedKextInfo(CFArrayRef kextIdentifiers, CFArrayRef infoKeys);
OSReturn KextManagerUnloadKextWithIdentifier(CFStringRef kextIdentifier);

#ifdef __cplusplus
}
#endif
