#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <stddef.h>

typedef const struct AuthorizationOpaqueRef* AuthorizationRef;
typedef const char* AuthorizationString;
typedef UInt32 AuthorizationFlags;

enum {
    kAuthorizationFlagDefaults = 0,
    kAuthorizationFlagInteractionAllowed = 1 << 0,
    kAuthorizationFlagExtendRights = 1 << 1,
    kAuthorizationFlagPartialRights = 1 << 2,
    kAuthorizationFlagDestroyRights = 1 << 3,
    kAuthorizationFlagPreAuthorize = 1 << 4
};

typedef struct {
    AuthorizationString name;
    size_t valueLength;
    void* value;
    UInt32 flags;
} AuthorizationItem;

typedef struct {
    UInt32 count;
    AuthorizationItem* items;
} AuthorizationItemSet;

typedef AuthorizationItemSet AuthorizationRights;
typedef AuthorizationItemSet AuthorizationEnvironment;
