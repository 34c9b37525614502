#include "Platform/Darwin/XPC/DarwinXPC.h"

#include <unistd.h>

#include <cstdlib>

#import "Platform/Darwin/Coding/Carrier.h"
#include "Platform/Darwin/XPC/DarwinXPCConnection.h"
#include "Platform/Darwin/XPC/DarwinXPCListener.h"

namespace Platform::Darwin {

namespace {

constexpr pid_t kLaunchd = 1;
// Where launchd tells a job its label. A job without it is taken for the right one.
constexpr const char* kJobVariable = "XPC_SERVICE_NAME";

bool isLaunchdJob(const std::string& label) {
    const char* const job = std::getenv(kJobVariable);
    return ::getppid() == kLaunchd && (job == nullptr || label == job);
}

}  // namespace

void DarwinXPC::registerClasses(const Base::AllowedClasses& classes) {
    for (const Base::CodedClass* const each : classes.objects) {
        static_cast<void>(carrierClass(*each));
    }
}

std::shared_ptr<XPCConnection> DarwinXPC::makeConnection(const std::string& machServiceName,
                                                         std::uint32_t options) {
    const Pool pool;
    return std::make_shared<DarwinXPCConnection>(machServiceName, options);
}

std::unique_ptr<XPCListener> DarwinXPC::makeListener(const std::string& machServiceName,
                                                     const std::vector<std::string>& clientRequirements) {
    if (!isLaunchdJob(machServiceName)) {
        return nullptr;
    }
    return std::make_unique<DarwinXPCListener>(machServiceName, clientRequirements);
}

}  // namespace Platform::Darwin
