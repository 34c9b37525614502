#include "InstallCommon/SupportPrivilegedHelperClient.h"

#include <memory>
#include <string>
#include <utility>

#include "NorvikCommon/InstallerLog.h"
#include "NorvikCommon/PrivilegedHelperUtils.h"
#include "Platform/SystemPorts.h"

namespace InstallCommon {

namespace {

constexpr std::string_view kProtocol = "NVKSupportPrivilegedHelper";
constexpr const char* kPackageName = "SwiftRuntimeForCommandLineTools";
constexpr const char* kPackageType = "pkg";
/// The longest wait for the helper's reply. No installation of the package comes near it; without it a helper
/// that launchd cannot start would block the program for ever.
constexpr std::int64_t kReplyTimeout = 3600LL * 1'000'000'000;

}  // namespace

Platform::XPCInterface SupportPrivilegedHelperClient::xpcInterface() {
    return {kProtocol, {installPackage.declaration()}};
}

bool SupportPrivilegedHelperClient::blessHelper(const Platform::SFAuthorization& auth) {
    return NorvikCommon::BlessHelperWithLabel(std::string(machServiceName), auth);
}

bool SupportPrivilegedHelperClient::installSwiftSupportPackage() {
    const Platform::SystemPorts& ports = Platform::SystemPorts::current();
    const std::optional<Base::URL> package =
        ports.bundles->mainBundle()->resource(kPackageName, kPackageType);
    if (!package) {
        return false;
    }
    const std::shared_ptr<Platform::XPCConnection> connection =
        ports.xpc->makeConnection(std::string(machServiceName), Platform::kXPCConnectionPrivileged);
    connection->setRemoteObjectInterface(xpcInterface());
    connection->resume();
    bool succeeded = false;
    const std::shared_ptr<Platform::XPCObject> helper = connection->synchronousRemoteObjectProxy(
        [](const Platform::Error& error) { NorvikCommon::logLine(error.description); });
    if (helper == nullptr || helper->protocolName() != kProtocol) {
        return false;
    }
    const std::unique_ptr<Platform::Timer> lastResort =
        ports.dispatch->makeTimer([waiting = std::weak_ptr(connection)] {
            if (const std::shared_ptr<Platform::XPCConnection> stuck = waiting.lock()) {
                stuck->invalidate();
            }
        });
    lastResort->schedule(ports.clock->time(kReplyTimeout), kReplyTimeout, 0);
    lastResort->resume();
    installPackage.send(*helper, *package, [&succeeded](const std::optional<Platform::Error>& error) {
        if (error) {
            NorvikCommon::logLine(error->description);
        } else {
            succeeded = true;
        }
    });
    return succeeded;
}

}  // namespace InstallCommon
