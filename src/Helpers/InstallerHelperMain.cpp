// com.norvik.InstallerHelper: executes command lists as root. Started on demand by launchd.

#include <memory>
#include <string>

#include "Helpers/AuthorizedClients.h"
#include "Helpers/CommandExecutor.h"
#include "Helpers/RefusalLog.h"
#include "Helpers/Retirement.h"
#include "InstallCommon/IntallHelper.h"
#include "NorvikCommon/InstallerLog.h"
#include "Platform/SystemPorts.h"

namespace {

constexpr std::uint32_t kIdleSeconds = 2;

}  // namespace

int main() {
    Platform::SystemPorts::setCurrent(&Platform::createSystemPorts());
    const std::string label(InstallCommon::InstallHelper::machServiceName);
    const std::unique_ptr<Platform::XPCListener> listener =
        Platform::SystemPorts::current().xpc.makeListener(label, Helpers::authorizedClients());
    if (listener == nullptr) {
        NorvikCommon::logInstallerLine("launchd handed over no service named " + label);
        return 1;
    }
    const auto refusals = std::make_shared<Helpers::RefusalLog>();
    const auto refused = [refusals](const std::string& why) { refusals->note(why); };
    auto executor = std::make_shared<Helpers::CommandExecutor>(*listener);
    const std::shared_ptr<Platform::XPCObject> exported =
        InstallCommon::exportedCommandExecuting(executor, refused);
    listener->run(
        [&exported](const std::shared_ptr<Platform::XPCConnection>& connection,
                    const Platform::XPCPeer& /*peer*/) {
            connection->setExportedObject(InstallCommon::CreateCommandExecutingXPCInterface(), exported);
            return true;
        },
        refused, kIdleSeconds);
    refusals->summarize();
    Helpers::retireRemovedTools(label);
    return 0;
}
