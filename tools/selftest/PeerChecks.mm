// How the helper finds out who its peer is, asked about this process: both ends of the connection are here.

#import <Foundation/Foundation.h>
#import <Security/Security.h>
#include <bsm/audit.h>
#include <unistd.h>

#include <optional>

#include "Check.h"
#import "ListService.h"
#import "Platform/Darwin/XPC/PeerIdentity.h"

/// See PeerIdentity.mm.
@interface NSXPCConnection (SelftestAuditToken)
@property(nonatomic, readonly) audit_token_t auditToken;
@end

namespace Selftest {

namespace {

using InstallCommon::CreateCommandExecutingXPCInterface;

// Where a token has what; the library that says so by name is not linked for two numbers.
constexpr std::size_t kEffectiveUser = 1;
constexpr std::size_t kPid = 5;

/// A visit of this process to itself; `look` runs on the new connection before it is resumed, as the check of
/// a peer does. Returns whether a list came through after that.
bool visit(const std::function<void(NSXPCConnection*)>& look) {
    const auto events = std::make_shared<Events>();
    const auto service = std::make_shared<ListService>(events);
    Loopback loopback(events, [&](NSXPCConnection* native,
                                  const std::shared_ptr<Platform::XPCConnection>& taken) {
        look(native);
        taken->setExportedObject(CreateCommandExecutingXPCInterface(), exportedCommandExecuting(service, {}));
    });
    const auto client = loopback.makeClient(CreateCommandExecutingXPCInterface());
    client->resume();
    sendList(*client, {}, std::make_shared<Reports>());
    const bool hasCome =
        events->waitForAny({"list of 0 commands", "client: invalid", "client: interrupted"}) &&
        events->has("list of 0 commands");
    client->invalidate();
    return hasCome;
}

Outcome checkAuditToken() {
    std::string fault = "nobody came";
    static_cast<void>(visit([&fault](NSXPCConnection* native) {
        if (![native respondsToSelector:@selector(auditToken)]) {
            fault = "a connection does not tell its peer's audit token";
            return;
        }
        const audit_token_t token = [native auditToken];
        const bool isSelf = token.val[kPid] == static_cast<std::uint32_t>(::getpid()) &&
                            token.val[kEffectiveUser] == ::geteuid();
        fault = isSelf ? "" : "the audit token is of process " + std::to_string(token.val[kPid]);
    }));
    return fault.empty() ? passed() : failed(fault);
}

/// The requirement that this program's own signature states; nothing when it has no signature.
std::optional<std::string> ownRequirement() {
    SecCodeRef code = nullptr;
    SecRequirementRef requirement = nullptr;
    CFStringRef text = nullptr;
    const bool isTold =
        SecCodeCopySelf(kSecCSDefaultFlags, &code) == errSecSuccess &&
        SecCodeCopyDesignatedRequirement(code, kSecCSDefaultFlags, &requirement) == errSecSuccess &&
        SecRequirementCopyString(requirement, kSecCSDefaultFlags, &text) == errSecSuccess;
    std::optional<std::string> result;
    if (isTold) {
        result = Platform::Darwin::text(static_cast<id>(const_cast<void*>(static_cast<const void*>(text))));
    }
    for (const CFTypeRef each :
         {static_cast<CFTypeRef>(code), static_cast<CFTypeRef>(requirement), static_cast<CFTypeRef>(text)}) {
        if (each != nullptr) {
            CFRelease(each);
        }
    }
    return result;
}

struct Judgement {
    bool isMade = false;
    bool hasCome = false;
    std::optional<std::string> refusal;
};

Judgement judge(const std::string& requirement) {
    Judgement result;
    result.hasCome = visit([&](NSXPCConnection* native) {
        result.refusal = Platform::Darwin::refusalOfPeer(native, {requirement});
        result.isMade = true;
    });
    return result;
}

constexpr const char* kUnsigned =
    "this program is not signed; codesign --force --options runtime --sign - sentrel-selftest";

/// With the hardened runtime it is served, and its messages pass the check that the system makes of each;
/// without, that is what it is refused for.
Outcome checkOwnRequirement() {
    const std::optional<std::string> requirement = ownRequirement();
    if (!requirement) {
        return skipped(kUnsigned);
    }
    const Judgement judgement = judge(*requirement);
    if (!judgement.isMade) {
        return failed("nobody came");
    }
    if (judgement.refusal == "its code is not signed with the hardened runtime") {
        return skipped("refused, rightly: " + *judgement.refusal);
    }
    if (judgement.refusal) {
        return failed("refused: " + *judgement.refusal + "; the requirement: " + *requirement);
    }
    return judgement.hasCome ? passed(*requirement)
                             : failed("accepted, but its message did not come through");
}

Outcome checkOtherRequirement() {
    if (!ownRequirement()) {
        return skipped(kUnsigned);
    }
    const Judgement judgement = judge("identifier \"com.norvik.somebody-else\" and anchor apple generic");
    if (!judgement.isMade) {
        return failed("nobody came");
    }
    const bool isNamed =
        judgement.refusal && judgement.refusal->find("com.norvik.somebody-else") != std::string::npos;
    return isNamed ? passed(*judgement.refusal)
                   : failed("accepted as somebody else, or refused for another reason: " +
                            judgement.refusal.value_or("accepted"));
}

Outcome checkBrokenRequirement() {
    const Judgement judgement = judge("this is not a requirement");
    return judgement.isMade && judgement.refusal ? passed(*judgement.refusal)
                                                 : failed("a requirement without sense lets everybody in");
}

}  // namespace

Checks peerChecks() {
    return {{"peer.audit-token", checkAuditToken},
            {"peer.own-requirement", checkOwnRequirement},
            {"peer.other-requirement", checkOtherRequirement},
            {"peer.broken-requirement", checkBrokenRequirement}};
}

}  // namespace Selftest
