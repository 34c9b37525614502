// com.norvik.SupportPrivilegedHelper: installs the runtime support package as root. Started on demand by
// launchd.

#include <memory>
#include <string>

#include "Helpers/AuthorizedClients.h"
#include "Helpers/PackageInstaller.h"
#include "Helpers/RefusalLog.h"
#include "Helpers/RuntimePackage.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "NorvikCommon/InstallerLog.h"
#include "Platform/SystemPorts.h"

namespace {

constexpr std::uint32_t kIdleSeconds = 2;

using InstallCommon::SupportPrivilegedHelperClient;

/// NVKSupportPrivilegedHelper, as it is exported. Every connection delivers on its own thread; installations
/// that come at the same time wait for each other.
///
/// A client that has been served may stay connected without need, so it does not keep the process. Tool and
/// job stay: the next client may have been told already that they are there. The installer helper removes
/// them at the end of an uninstallation.
class SupportPrivilegedHelper final : public Platform::XPCObject {
  public:
    /// `listener` outlives the object.
    explicit SupportPrivilegedHelper(Platform::XPCListener& listener) : listener_(listener) {}

    [[nodiscard]] std::string_view protocolName() const override { return "NVKSupportPrivilegedHelper"; }

    void message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                 Platform::XPCReply reply) override {
        if (selector != SupportPrivilegedHelperClient::installSelector) {
            reply(
                Platform::Error{"The support helper does not understand " + std::string(selector) + ".", 1});
            return;
        }
        const std::shared_ptr<void> transaction = listener_.transaction();
        reply(Helpers::installPackage(std::get<Base::URL>(arguments.at(0)), Helpers::kRuntimePackage));
        listener_.disregardPeers();
    }

  private:
    Platform::XPCListener& listener_;
};

}  // namespace

int main() {
    Platform::SystemPorts::setCurrent(&Platform::createSystemPorts());
    const std::string label(SupportPrivilegedHelperClient::machServiceName);
    const std::unique_ptr<Platform::XPCListener> listener =
        Platform::SystemPorts::current().xpc.makeListener(label, Helpers::authorizedClients());
    if (listener == nullptr) {
        NorvikCommon::logInstallerLine("launchd handed over no service named " + label);
        return 1;
    }
    const auto refusals = std::make_shared<Helpers::RefusalLog>();
    const auto helper = std::make_shared<SupportPrivilegedHelper>(*listener);
    listener->run(
        [&helper](const std::shared_ptr<Platform::XPCConnection>& connection,
                  const Platform::XPCPeer& /*peer*/) {
            connection->setExportedObject(SupportPrivilegedHelperClient::xpcInterface(), helper);
            return true;
        },
        [refusals](const std::string& why) { refusals->note(why); }, kIdleSeconds);
    refusals->summarize();
    return 0;
}
