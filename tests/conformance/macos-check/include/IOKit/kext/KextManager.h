#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <libkern/OSReturn.h>

#ifdef __cplusplus
extern "C" {
#endif

OSReturn KextManagerUnloadKextWithIdentifier(CFStringRef kextIdentifier);

#ifdef __cplusplus
}
#endif
