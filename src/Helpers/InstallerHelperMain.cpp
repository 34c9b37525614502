// com.norvik.InstallerHelper: executes command lists as root. Started on demand by launchd.

#include <memory>
#include <string>

#include "Helpers/AuthorizedClients.h"
#include "Helpers/CommandExecutor.h"
#include "Helpers/RefusalLog.h"
#include "Helpers/Retirement.h"
#include "InstallCommon/IntallHelper.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "NorvikCommon/InstallerLog.h"
#include "Platform/SystemPorts.h"

namespace {

constexpr std::uint32_t kIdleSeconds = 2;

}  // namespace

int main() {
    Platform::SystemPorts::setCurrent(&Platform::createSystemPorts());
    const std::string label(InstallCommon::InstallHelper::machServiceName);
    // Never destroyed, nor is what uses it: a request to end may come at any moment.
    Platform::XPCListener* const listener =
        Platform::SystemPorts::current().xpc.makeListener(label, Helpers::authorizedClients()).release();
    if (listener == nullptr) {
        NorvikCommon::logInstallerLine("launchd handed over no service named " + label);
        return 1;
    }
    const auto refusals = std::make_shared<Helpers::RefusalLog>();
    const auto refused = [refusals](const std::string& why) { refusals->note(why); };
    auto* const retirement = new Helpers::Retirement(
        label, std::string(InstallCommon::SupportPrivilegedHelperClient::machServiceName), *listener);
    auto executor = std::make_shared<Helpers::CommandExecutor>(*listener, *retirement);
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
    return 0;
}
