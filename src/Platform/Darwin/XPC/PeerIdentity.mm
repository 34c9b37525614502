#import "Platform/Darwin/XPC/PeerIdentity.h"

#import <Security/Security.h>
#include <bsm/audit.h>

#include <algorithm>
#include <memory>
#include <type_traits>

#include "Platform/Darwin/FoundationBridge.h"

/// In no public header, and there since macOS 10.7: the public accessors know the process id only. Asked for
/// before it is used.
@interface NSXPCConnection (PlatformDarwinAuditToken)
@property(nonatomic, readonly) audit_token_t auditToken;
@end

namespace Platform::Darwin {

namespace {

struct ReleaseCF {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};
template <class Reference>
using OwnedCF = std::unique_ptr<std::remove_pointer_t<Reference>, ReleaseCF>;

using OwnedCode = OwnedCF<SecCodeRef>;

// kSecCodeSignatureRuntime; older headers do not have it.
constexpr std::uint32_t kHardenedRuntime = 0x10000;

CFStringRef stringRef(NSString* string) {
    return reinterpret_cast<CFStringRef>(string);
}

/// Foundation's view of the same object, borrowed.
id foundationView(CFTypeRef object) {
    return static_cast<id>(const_cast<void*>(object));
}

/// The running code that `token` names; null when there is none any more.
OwnedCode codeOf(const audit_token_t& token) {
    NSData* const bytes = [NSData dataWithBytes:&token length:sizeof token];
    NSDictionary* const attributes =
        [NSDictionary dictionaryWithObject:bytes forKey:foundationView(kSecGuestAttributeAudit)];
    SecCodeRef code = nullptr;
    const OSStatus status = SecCodeCopyGuestWithAttributes(
        nullptr, reinterpret_cast<CFDictionaryRef>(attributes), kSecCSDefaultFlags, &code);
    OwnedCode owned(code);
    return status == errSecSuccess ? std::move(owned) : nullptr;
}

bool satisfies(SecCodeRef code, const std::string& text) {
    SecRequirementRef requirement = nullptr;
    const OSStatus status =
        SecRequirementCreateWithString(stringRef(foundationString(text)), kSecCSDefaultFlags, &requirement);
    const OwnedCF<SecRequirementRef> owned(requirement);
    // A requirement that is none must not turn into a check of validity alone.
    return status == errSecSuccess && requirement != nullptr &&
           SecCodeCheckValidity(code, kSecCSDefaultFlags, requirement) == errSecSuccess;
}

bool hasHardenedRuntime(SecCodeRef code) {
    CFDictionaryRef information = nullptr;
    // Of running code too: the interface takes both kinds.
    const OSStatus status = SecCodeCopySigningInformation(code, kSecCSDefaultFlags, &information);
    const OwnedCF<CFDictionaryRef> owned(information);
    if (status != errSecSuccess || information == nullptr) {
        return false;
    }
    NSDictionary* const facts = foundationView(information);
    NSNumber* const flags = [facts objectForKey:foundationView(kSecCodeInfoFlags)];
    return ([flags unsignedIntValue] & kHardenedRuntime) != 0;
}

/// One requirement that is satisfied when one of these is.
std::string anyOf(const std::vector<std::string>& requirements) {
    std::string text;
    for (const std::string& each : requirements) {
        text += (text.empty() ? "(" : " or (") + each + ")";
    }
    return text;
}

}  // namespace

std::optional<std::string> refusalOfPeer(NSXPCConnection* connection,
                                         const std::vector<std::string>& requirements) {
    const Pool pool;
    if (![connection respondsToSelector:@selector(auditToken)]) {
        return "the system does not tell who it is";
    }
    const OwnedCode code = codeOf([connection auditToken]);
    if (code == nullptr) {
        return "its code has no identity that can be trusted";
    }
    const bool isAllowed =
        std::any_of(requirements.begin(), requirements.end(),
                    [&code](const std::string& requirement) { return satisfies(code.get(), requirement); });
    if (!isAllowed) {
        return "its identity is not an authorized client's";
    }
    if (!hasHardenedRuntime(code.get())) {
        return "its code is not signed with the hardened runtime";
    }
    const SEL setRequirement = NSSelectorFromString(@"setCodeSigningRequirement:");
    if ([connection respondsToSelector:setRequirement]) {
        [connection performSelector:setRequirement withObject:foundationString(anyOf(requirements))];
    }
    return std::nullopt;
}

}  // namespace Platform::Darwin
