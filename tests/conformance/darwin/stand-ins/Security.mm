#include "stand-ins/Security.h"

#import <Foundation/Foundation.h>

#include <Security/Security.h>
#include <bsm/audit.h>

#include <algorithm>
#include <cstring>

#import "Platform/Darwin/XPC/PeerIdentity.h"

namespace StandIns {

Signing signing;

}  // namespace StandIns

using StandIns::signing;

namespace {

id foundationView(CFTypeRef object) {
    return static_cast<id>(const_cast<void*>(object));
}

}  // namespace

/// Anything that the services make, with what it stands for.
@interface StandInSecurityObject : NSObject {
    NSString* text_;
}
- (id)initWithText:(NSString*)text;
- (NSString*)text;
@end

@implementation StandInSecurityObject

- (id)initWithText:(NSString*)text {
    self = [super init];
    text_ = [text copy];
    ++signing.objects;
    return self;
}

- (NSString*)text {
    return text_;
}

- (void)dealloc {
    --signing.objects;
    [text_ release];
    [super dealloc];
}

@end

/// Counted like the others.
@interface StandInInformation : NSObject {
    NSNumber* flags_;
}
- (id)initWithFlags:(NSNumber*)flags;
@end

@implementation StandInInformation

- (id)initWithFlags:(NSNumber*)flags {
    self = [super init];
    flags_ = [flags retain];
    ++signing.objects;
    return self;
}

- (id)objectForKey:(id)key {
    return [key isEqual:foundationView(kSecCodeInfoFlags)] ? flags_ : nil;
}

- (void)dealloc {
    --signing.objects;
    [flags_ release];
    [super dealloc];
}

@end

/// A connection as far as it is asked who its peer is; without an audit token at first.
@interface PeerDouble : NSObject
@end

@implementation PeerDouble
@end

@interface PeerWithToken : PeerDouble
@end

@implementation PeerWithToken

- (audit_token_t)auditToken {
    audit_token_t token;
    std::copy(signing.token.begin(), signing.token.end(), token.val);
    return token;
}

@end

@interface PeerWithRequirement : PeerWithToken
@end

@implementation PeerWithRequirement

- (void)setCodeSigningRequirement:(NSString*)requirement {
    signing.held.emplace_back([requirement UTF8String]);
}

@end

namespace {

bool contains(const std::vector<std::string>& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// A requirement holds when a test says so; one that asks for an entitlement to be absent, when it is.
bool isSatisfied(const std::string& text) {
    const std::string before = "!(entitlement[\"";
    const std::string after = "\"] exists)";
    if (!text.starts_with(before) || !text.ends_with(after)) {
        return contains(signing.satisfied, text);
    }
    return !contains(signing.entitlements,
                     text.substr(before.size(), text.size() - before.size() - after.size()));
}

constexpr OSStatus kRefused = -67062;

}  // namespace

const CFStringRef kSecGuestAttributeAudit = reinterpret_cast<CFStringRef>(@"audit");
const CFStringRef kSecCodeInfoFlags = reinterpret_cast<CFStringRef>(@"flags");

OSStatus SecCodeCopyGuestWithAttributes(SecCodeRef host, CFDictionaryRef attributes, SecCSFlags flags,
                                        SecCodeRef* guest) {
    NSDictionary* const asked = foundationView(attributes);
    NSData* const bytes = [asked objectForKey:foundationView(kSecGuestAttributeAudit)];
    StandIns::Token token;
    if (host != nullptr || flags != kSecCSDefaultFlags || [asked count] != 1 ||
        [bytes length] != sizeof token) {
        signing.askedOtherwise = true;
        return kRefused;
    }
    std::memcpy(token.data(), [bytes bytes], sizeof token);
    signing.asked.push_back(token);
    if (!signing.isRunning) {
        return kRefused;
    }
    *guest = reinterpret_cast<SecCodeRef>([[StandInSecurityObject alloc] initWithText:nil]);
    return errSecSuccess;
}

OSStatus SecRequirementCreateWithString(CFStringRef text, SecCSFlags flags, SecRequirementRef* requirement) {
    const std::string words = [foundationView(text) UTF8String];
    signing.askedOtherwise = signing.askedOtherwise || flags != kSecCSDefaultFlags;
    if (contains(signing.malformed, words)) {
        return signing.tellsOfMalformed ? kRefused : static_cast<OSStatus>(errSecSuccess);
    }
    *requirement = reinterpret_cast<SecRequirementRef>(
        [[StandInSecurityObject alloc] initWithText:foundationView(text)]);
    return errSecSuccess;
}

// Without a requirement it is a check of the code's validity alone, as the system's is.
OSStatus SecCodeCheckValidity(SecCodeRef /*code*/, SecCSFlags flags, SecRequirementRef requirement) {
    signing.askedOtherwise = signing.askedOtherwise || flags != kSecCSDefaultFlags;
    StandInSecurityObject* const held = foundationView(requirement);
    const bool satisfies = held == nil || isSatisfied([[held text] UTF8String]);
    return signing.isValid && satisfies ? static_cast<OSStatus>(errSecSuccess) : kRefused;
}

OSStatus SecCodeCopySigningInformation(SecStaticCodeRef /*code*/, SecCSFlags /*flags*/,
                                       CFDictionaryRef* information) {
    NSNumber* const flags = signing.flags ? [NSNumber numberWithUnsignedInt:*signing.flags] : nil;
    *information = reinterpret_cast<CFDictionaryRef>([[StandInInformation alloc] initWithFlags:flags]);
    return errSecSuccess;
}

namespace StandIns {

std::optional<std::string> refusal(const std::vector<std::string>& requirements) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    const Class peerClass = !signing.hasToken           ? [PeerDouble class]
                            : !signing.takesRequirement ? [PeerWithToken class]
                                                        : [PeerWithRequirement class];
    const id peer = [[[peerClass alloc] init] autorelease];
    std::optional<std::string> why =
        Platform::Darwin::refusalOfPeer(static_cast<NSXPCConnection*>(peer), requirements);
    [pool release];
    return why;
}

}  // namespace StandIns
