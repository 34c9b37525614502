#import "Platform/Darwin/XPC/PeerIdentity.h"

#import <Security/Security.h>
#include <bsm/audit.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
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

/// The running code that `token` names; null if it no longer exists.
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
    // A malformed requirement must not turn into a check of validity alone.
    return status == errSecSuccess && requirement != nullptr &&
           SecCodeCheckValidity(code, kSecCSDefaultFlags, requirement) == errSecSuccess;
}

/// Each of these opens a door again that the hardened runtime closes: a debugger, foreign libraries, and
/// DYLD_INSERT_LIBRARIES.
constexpr std::array<const char*, 3> kOpenings{"com.apple.security.get-task-allow",
                                               "com.apple.security.cs.disable-library-validation",
                                               "com.apple.security.cs.allow-dyld-environment-variables"};

std::string without(const char* entitlement) {
    return "!(entitlement[\"" + std::string(entitlement) + "\"] exists)";
}

/// The first condition of `requirement` that the code does not satisfy, with its identifier if it satisfies
/// the one before it; for people, because the requirement as a whole has decided.
std::optional<std::string> unmetCondition(SecCodeRef code, std::string_view requirement) {
    constexpr std::string_view kAnd = " and ";
    for (bool isFirst = true; !requirement.empty(); isFirst = false) {
        const std::size_t end = requirement.find(kAnd);
        const std::string condition(requirement.substr(0, end));
        if (!satisfies(code, condition)) {
            return isFirst ? std::nullopt : std::optional(condition);
        }
        requirement.remove_prefix(end == std::string_view::npos ? requirement.size() : end + kAnd.size());
    }
    return std::nullopt;
}

std::string whyNotAllowed(SecCodeRef code, const std::vector<std::string>& requirements) {
    const std::string why = "its identity is not an authorized client's";
    for (const std::string& requirement : requirements) {
        if (const auto unmet = unmetCondition(code, requirement)) {
            return why + ", not: " + *unmet;
        }
    }
    return why;
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

/// What the system is to hold against every message: one of the requirements, and none of the openings.
std::string wholeRequirement(const std::vector<std::string>& requirements) {
    std::string text;
    for (const std::string& each : requirements) {
        text += (text.empty() ? "((" : " or (") + each + ")";
    }
    text += ")";
    for (const char* const opening : kOpenings) {
        text += " and " + without(opening);
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
        return whyNotAllowed(code.get(), requirements);
    }
    if (!hasHardenedRuntime(code.get())) {
        return "its code is not signed with the hardened runtime";
    }
    for (const char* const opening : kOpenings) {
        if (!satisfies(code.get(), without(opening))) {
            return "its code has the entitlement " + std::string(opening);
        }
    }
    const SEL setRequirement = NSSelectorFromString(@"setCodeSigningRequirement:");
    if ([connection respondsToSelector:setRequirement]) {
        [connection performSelector:setRequirement
                         withObject:foundationString(wholeRequirement(requirements))];
    }
    return std::nullopt;
}

}  // namespace Platform::Darwin
