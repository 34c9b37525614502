#include "Helpers/InstallerHelper.h"

#include <string>
#include <utility>

#include "Helpers/AuthorizedClients.h"
#include "InstallCommon/IntallHelper.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "NorvikCommon/InstallerLog.h"
#include "Platform/SystemPorts.h"

namespace Helpers {

std::unique_ptr<InstallerHelper> InstallerHelper::make() {
    const std::string label(InstallCommon::InstallHelper::machServiceName);
    InstallCommon::registerCommandListClasses();
    auto listener = Platform::SystemPorts::current().xpc->makeListener(label, authorizedClients());
    if (listener == nullptr) {
        NorvikCommon::logInstallerLine("launchd handed over no service named " + label);
        return nullptr;
    }
    return std::make_unique<InstallerHelper>(std::move(listener));
}

InstallerHelper::InstallerHelper(std::unique_ptr<Platform::XPCListener> listener)
    : listener_(std::move(listener)),
      refusals_(std::make_shared<RefusalLog>()),
      retirement_(std::string(InstallCommon::InstallHelper::machServiceName),
                  std::string(InstallCommon::SupportPrivilegedHelperClient::machServiceName), *listener_) {}

void InstallerHelper::serve() {
    const auto refused = [refusals = refusals_](const std::string& why) { refusals->note(why); };
    const std::shared_ptr<Platform::XPCObject> exported = InstallCommon::exportedCommandExecuting(
        std::make_shared<CommandExecutor>(*listener_, retirement_), refused);
    listener_->run(
        [&exported](const std::shared_ptr<Platform::XPCConnection>& connection,
                    const Platform::XPCPeer& /*peer*/) {
            connection->setExportedObject(InstallCommon::CreateCommandExecutingXPCInterface(), exported);
            return true;
        },
        refused, kIdleSeconds);
    refusals_->summarize();
}

}  // namespace Helpers
