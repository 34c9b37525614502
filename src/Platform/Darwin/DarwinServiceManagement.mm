#include "Platform/Darwin/DarwinServiceManagement.h"

#include "Platform/Darwin/DarwinAuthorization.h"
#include "Platform/Darwin/Declarations/ServiceManagement.h"
#import "Platform/Darwin/ErrorText.h"
#include "Platform/Darwin/FoundationBridge.h"

namespace Platform::Darwin {

namespace {

CFStringRef nativeDomain(LaunchdDomain domain) {
    switch (domain) {
        case LaunchdDomain::system:
            return kSMDomainSystemLaunchd;
    }
    return nullptr;
}

}  // namespace

std::optional<Error> DarwinServiceManagement::blessJob(LaunchdDomain domain, const std::string& label,
                                                       const AuthorizationReference& authorization) {
    const Pool pool;
    const void* const reference = static_cast<const DarwinAuthorizationReference&>(authorization).reference();
    CFErrorRef failure = nullptr;
    const bool blessed =
        ::SMJobBless(nativeDomain(domain), reinterpret_cast<CFStringRef>(foundationString(label)),
                     static_cast<::AuthorizationRef>(reference), &failure) != 0;
    const auto error = Retained<NSError*>::adopt(reinterpret_cast<NSError*>(failure));
    if (blessed) {
        return std::nullopt;
    }
    if (!error) {
        return Error{"The helper " + label + " could not be installed.", 0};
    }
    return Error{text(PlatformDarwinErrorText(error.get())), static_cast<int>([error.get() code])};
}

}  // namespace Platform::Darwin
