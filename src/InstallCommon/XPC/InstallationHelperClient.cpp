#include "InstallCommon/XPC/InstallationHelperClient.h"

#include <iterator>
#include <utility>

#include "Base/CheckedSum.h"
#include "Base/FatalError.h"
#include "InstallCommon/CommandSuitsProvider.h"
#include "InstallCommon/CurrentInstallationEnvironment.h"
#include "InstallCommon/IntallHelper.h"
#include "Platform/SystemPorts.h"

namespace InstallCommon {

InstallationHelperClient::InstallationHelperClient()
    : XPCClient(std::string(InstallHelper::machServiceName), true) {}

InstallationHelperClient::InstallationHelperClient(std::string machServiceName, bool isServicePrivileged)
    : XPCClient(std::move(machServiceName), isServicePrivileged) {
    Base::fatalError(
        "Use of unimplemented initializer 'init(machServiceName:isServicePrivileged:)' for class "
        "'InstallCommon.InstallationHelperClient'");
}

bool InstallationHelperClient::canUninstall() const {
    const std::unique_ptr<Platform::Bundle> mainBundle =
        Platform::SystemPorts::current().bundles.mainBundle();
    switch (CurrentInstallationEnvironment::shared().checkNorvikAntivirusInstallType(*mainBundle)) {
        case InstallatedNorvikAntivirusType::notInstalled:
            return false;
        case InstallatedNorvikAntivirusType::installedNotUpdateable:
        case InstallatedNorvikAntivirusType::installedUpdateable:
        case InstallatedNorvikAntivirusType::installedSameVersion:
            return true;
        case InstallatedNorvikAntivirusType::installedNewerVersion:
            return false;
    }
    Base::fatalError("unexpected enumeration value");
}

void InstallationHelperClient::uninstall() {
    CommandList commands = CommandSuitsProvider::makeUninstallCommands();
    CommandList cleanup = CommandSuitsProvider::makeCleanupCommands();
    std::move(cleanup.begin(), cleanup.end(), std::back_inserter(commands));
    send(std::move(commands));
}

void InstallationHelperClient::send(CommandList commands) {
    std::int32_t total = 0;
    for (const std::unique_ptr<Command>& command : commands) {
        total = Base::checkedSum(total, command->weight());
    }
    setTotalCommandsWeight(total);
    connect();
    if (remoteObject_ == nullptr) {
        return;
    }
    auto self = std::static_pointer_cast<InstallationHelperClient>(shared_from_this());
    remoteObject_->executeWithCommands(std::move(commands), std::move(self));
}

void InstallationHelperClient::commandExecutingDidExecuteCommand(const std::string& description,
                                                                 std::int32_t withWeight) {
    executedCommandsWeight_ = Base::checkedSum(executedCommandsWeight_, withWeight);
    if (progressNotificationBlock_) {
        progressNotificationBlock_(description, totalCommandsWeight_, executedCommandsWeight_);
    }
}

void InstallationHelperClient::willResumeConnection(Platform::XPCConnection& connection) {
    connection.setRemoteObjectInterface(CreateCommandExecutingXPCInterface());
}

void InstallationHelperClient::didResumeConnection(Platform::XPCConnection& connection) {
    remoteObject_ = commandExecutingProxy(connection.remoteObjectProxy());
}

}  // namespace InstallCommon
