#include "NorvikCommon/PrivilegedHelperUtils.h"

#include "NorvikCommon/InstallerLog.h"
#include "Platform/SystemPorts.h"

namespace NorvikCommon {

bool BlessHelperWithLabel(const std::string& label, const Platform::SFAuthorization& authorization) {
    const Platform::AuthorizationReference* reference = authorization.authorizationRef();
    if (reference == nullptr) {
        return false;
    }
    Platform::ServiceManagement& services = Platform::SystemPorts::current().serviceManagement;
    if (const auto error = services.blessJob(Platform::LaunchdDomain::system, label, *reference)) {
        logLine("SMJobBless error: " + error->description);
        return false;
    }
    return true;
}

}  // namespace NorvikCommon
