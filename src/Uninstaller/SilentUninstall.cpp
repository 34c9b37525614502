#include "Uninstaller/SilentUninstall.h"

#include <algorithm>

#include "InstallCommon/IntallHelper.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "NorvikCommon/AuthorizationUtils.h"
#include "NorvikCommon/InstallerLog.h"
#include "NorvikCommon/PrivilegedHelperUtils.h"
#include "Platform/SystemPorts.h"

namespace Uninstall_Sentrel {

namespace {

bool contains(const std::vector<std::string>& args, std::string_view argument) {
    return std::find(args.begin(), args.end(), argument) != args.end();
}

bool authorizeAndBlessHelpers() {
    using InstallCommon::InstallHelper;
    const std::unique_ptr<Platform::SFAuthorization> authorization =
        NorvikCommon::AuthorizationUtils::authorizationForRootAction(false);
    return authorization != nullptr &&
           NorvikCommon::BlessHelperWithLabel(std::string(InstallHelper::machServiceName), *authorization) &&
           InstallCommon::SupportPrivilegedHelperClient::blessHelper(*authorization);
}

/// Sends the list and waits for the report that completes it.
bool uninstallAndWait() {
    const Platform::SystemPorts& ports = Platform::SystemPorts::current();
    const std::shared_ptr<Platform::Semaphore> finished = ports.dispatch->makeSemaphore(0);
    client()->setProgressNotificationBlock([finished](const std::string& /*description*/,
                                                      std::int32_t totalWeight, std::int32_t executedWeight) {
        if (executedWeight == totalWeight) {
            NorvikCommon::logLine("Uninstallation finished");
            finished->signal();
        }
    });
    client()->uninstall();
    const std::uint64_t deadline =
        ports.clock->time(std::chrono::nanoseconds(kUninstallationTimeout).count());
    return finished->wait(deadline);
}

}  // namespace

std::shared_ptr<InstallCommon::InstallationHelperClient>& client() {
    // Lives until the process ends: the connection's thread may still use the client then.
    static auto* const instance = new std::shared_ptr<InstallCommon::InstallationHelperClient>;
    return *instance;
}

bool isSilent(const std::vector<std::string>& args) {
    return contains(args, "-s") || contains(args, "--silent");
}

bool silentUninstall() {
    if (!authorizeAndBlessHelpers()) {
        NorvikCommon::logLine("Helper authorization and blessing failed. Quitting...");
        return false;
    }
    if (!InstallCommon::SupportPrivilegedHelperClient::installSwiftSupportPackage()) {
        NorvikCommon::logLine("Failed to install Swift runtime support. Quitting...");
        return false;
    }
    if (!client()->canUninstall()) {
        NorvikCommon::logLine("Antivirus cannot be uninstalled");
        return false;
    }
    return uninstallAndWait();
}

void runSilently() {
    client() = std::make_shared<InstallCommon::InstallationHelperClient>();
    NorvikCommon::logInstallerLine(silentUninstall() ? "Uninstallation finished." : "Uninstallation failed.");
}

}  // namespace Uninstall_Sentrel
