#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <Security/Authorization.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { errSecSuccess = 0 };

typedef const struct __SecCode* SecStaticCodeRef;
typedef struct __SecCode* SecCodeRef;
typedef struct __SecRequirement* SecRequirementRef;

typedef uint32_t SecCSFlags;
enum { kSecCSDefaultFlags = 0, kSecCSSigningInformation = 1 << 1, kSecCSDynamicInformation = 1 << 3 };

extern const CFStringRef kSecGuestAttributeAudit;
extern const CFStringRef kSecCodeInfoFlags;

OSStatus SecCodeCopySelf(SecCSFlags flags, SecCodeRef* self);
OSStatus SecCodeCopyDesignatedRequirement(SecStaticCodeRef code, SecCSFlags flags,
                                          SecRequirementRef* requirement);
OSStatus SecRequirementCopyString(SecRequirementRef requirement, SecCSFlags flags, CFStringRef* text);
OSStatus SecCodeCopyGuestWithAttributes(SecCodeRef host, CFDictionaryRef attributes, SecCSFlags flags,
                                        SecCodeRef* guest);
OSStatus SecCodeCheckValidity(SecCodeRef code, SecCSFlags flags, SecRequirementRef requirement);
OSStatus SecCodeCopySigningInformation(SecStaticCodeRef code, SecCSFlags flags, CFDictionaryRef* information);
OSStatus SecRequirementCreateWithString(CFStringRef text, SecCSFlags flags, SecRequirementRef* requirement);

#ifdef __cplusplus
}
#endif
