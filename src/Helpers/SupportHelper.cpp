#include "Helpers/SupportHelper.h"

#include "Helpers/AuthorizedClients.h"
#include "Helpers/RefusalLog.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "NorvikCommon/InstallerLog.h"
#include "Platform/SystemPorts.h"

namespace Helpers {

using InstallCommon::SupportPrivilegedHelperClient;

SupportHelper::SupportHelper(Platform::XPCListener& listener, PackageFingerprint maker)
    : listener_(listener), maker_(maker) {}

void SupportHelper::message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                            Platform::XPCReply reply) {
    const auto request = SupportPrivilegedHelperClient::installPackage.received(selector, arguments);
    if (!request) {
        reply(Platform::Error{"The support helper does not understand " + std::string(selector) + ".", 1});
        return;
    }
    const std::shared_ptr<void> transaction = listener_.transaction();
    const auto& [package] = *request;
    reply(installPackage(package, maker_));
    listener_.disregardPeers();
}

bool SupportHelper::serve(PackageFingerprint maker) {
    const std::string label(SupportPrivilegedHelperClient::machServiceName);
    const auto listener = Platform::SystemPorts::current().xpc->makeListener(label, authorizedClients());
    if (listener == nullptr) {
        NorvikCommon::logInstallerLine("launchd handed over no service named " + label);
        return false;
    }
    const auto refusals = std::make_shared<RefusalLog>();
    const auto helper = std::make_shared<SupportHelper>(*listener, maker);
    listener->run(
        [&helper](const std::shared_ptr<Platform::XPCConnection>& connection,
                  const Platform::XPCPeer& /*peer*/) {
            connection->setExportedObject(SupportPrivilegedHelperClient::xpcInterface(), helper);
            return true;
        },
        [refusals](const std::string& why) { refusals->note(why); }, kIdleSeconds);
    refusals->summarize();
    return true;
}

}  // namespace Helpers
