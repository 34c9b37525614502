#include "stand-ins/Services.h"

#import <Foundation/Foundation.h>

#include <IOKit/kext/KextManager.h>

#include "Platform/Darwin/Declarations/SFAuthorization.h"
#include "Platform/Darwin/Declarations/ServiceManagement.h"

namespace StandIns {

Services services;

namespace {

const int theReference = 0;

std::vector<Item> itemsOf(const AuthorizationItemSet* set) {
    std::vector<Item> items;
    for (UInt32 index = 0; set != nullptr && index < set->count; ++index) {
        const AuthorizationItem& item = set->items[index];
        const bool hasValue = item.value != nullptr;
        items.push_back({item.name, hasValue, hasValue ? static_cast<const char*>(item.value) : "",
                         item.valueLength, item.flags});
    }
    return items;
}

std::string textOf(CFStringRef string) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    NSString* const object = reinterpret_cast<NSString*>(const_cast<void*>(static_cast<const void*>(string)));
    std::string text = [object UTF8String];
    [pool release];
    return text;
}

}  // namespace

const void* sessionReference() {
    return &theReference;
}

}  // namespace StandIns

using StandIns::services;

/// Counts the errors that are there.
@interface StandInError : NSError
@end

@implementation StandInError

- (void)dealloc {
    --services.errors;
    [super dealloc];
}

@end

@implementation SFAuthorization

- (instancetype)init {
    self = [super init];
    ++services.sessions;
    return self;
}

- (void)dealloc {
    --services.sessions;
    [super dealloc];
}

- (AuthorizationRef)authorizationRef {
    return static_cast<AuthorizationRef>(services.hasReference ? StandIns::sessionReference() : nullptr);
}

- (BOOL)obtainWithRights:(const AuthorizationRights*)rights
                   flags:(AuthorizationFlags)flags
             environment:(const AuthorizationEnvironment*)environment
        authorizedRights:(AuthorizationRights**)authorizedRights
                   error:(NSError**)error {
    services.rights = StandIns::itemsOf(rights);
    services.environment = StandIns::itemsOf(environment);
    services.flags = flags;
    services.askedForRightsOrError = authorizedRights != nullptr || error != nullptr;
    return services.grants;
}

@end

const CFStringRef kSMDomainSystemLaunchd = reinterpret_cast<CFStringRef>(@"the system domain");
const CFAllocatorRef kCFAllocatorDefault = nullptr;

Boolean SMJobBless(CFStringRef domain, CFStringRef executableLabel, AuthorizationRef auth,
                   CFErrorRef* outError) {
    services.domain = StandIns::textOf(domain);
    services.label = StandIns::textOf(executableLabel);
    services.reference = auth;
    if (!services.blesses && services.errorCode != 0) {
        ++services.errors;
        *outError = reinterpret_cast<CFErrorRef>([[StandInError alloc]
            initWithDomain:@"CFErrorDomainLaunchd"
                      code:services.errorCode
                  userInfo:[NSDictionary dictionaryWithObject:@"No permission."
                                                       forKey:NSLocalizedDescriptionKey]]);
    }
    return services.blesses;
}

OSReturn KextManagerUnloadKextWithIdentifier(CFStringRef kextIdentifier) {
    services.kext = StandIns::textOf(kextIdentifier);
    return services.kextResult;
}

CFDictionaryRef KextManagerCopyLoadedKextInfo(CFArrayRef kextIdentifiers, CFArrayRef /*infoKeys*/) {
    if (!services.knowsKexts) {
        return nullptr;
    }
    NSMutableDictionary* const loaded = [[NSMutableDictionary alloc] init];
    NSArray* const identifiers = reinterpret_cast<NSArray*>(const_cast<__CFArray*>(kextIdentifiers));
    for (NSUInteger index = 0; index < [identifiers count]; ++index) {
        NSString* const identifier = [identifiers objectAtIndex:index];
        const std::string text = [identifier UTF8String];
        services.kextsAskedAbout += (services.kextsAskedAbout.empty() ? "" : " ") + text;
        if (services.loadedKexts.count(text) != 0) {
            [loaded setObject:[NSDictionary dictionary] forKey:identifier];
        }
    }
    return reinterpret_cast<CFDictionaryRef>(loaded);
}

struct CFArrayCallBacks {};
const CFArrayCallBacks kCFTypeArrayCallBacks{};

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    return [reinterpret_cast<NSDictionary*>(const_cast<__CFDictionary*>(dictionary))
        objectForKey:static_cast<id>(const_cast<void*>(key))];
}

CFArrayRef CFArrayCreate(CFAllocatorRef /*allocator*/, const void** values, CFIndex count,
                         const CFArrayCallBacks* /*callBacks*/) {
    return reinterpret_cast<CFArrayRef>([[NSArray alloc]
        initWithObjects:reinterpret_cast<id*>(const_cast<void**>(values))
                  count:static_cast<NSUInteger>(count)]);
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef /*allocator*/, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding /*encoding*/, Boolean /*isExternalRepresentation*/) {
    return reinterpret_cast<CFStringRef>([[NSString alloc] initWithBytes:bytes
                                                                  length:static_cast<NSUInteger>(count)
                                                                encoding:NSUTF8StringEncoding]);
}

void CFRelease(CFTypeRef object) {
    [static_cast<NSObject*>(const_cast<void*>(object)) release];
}
