#pragma once

// The Service Management framework: the system's own header, or the one operation in use where there is none.
#if __has_include(<ServiceManagement/ServiceManagement.h>)
#include <ServiceManagement/ServiceManagement.h>
#else

#include <CoreFoundation/CoreFoundation.h>
#include <Security/Authorization.h>

extern "C" {

/// launchd's system domain, the only one that takes blessed helpers.
extern const CFStringRef kSMDomainSystemLaunchd;

/// Installs the calling program's helper `executableLabel` and registers its job. The caller owns what is put
/// into `outError` on failure.
Boolean SMJobBless(CFStringRef domain, CFStringRef executableLabel, AuthorizationRef auth,
                   CFErrorRef* outError);
}

#endif
