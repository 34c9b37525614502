#include "InstallCommon/XPC/InstallationHelperClient.h"

#include <utility>

#include "Base/CheckedSum.h"
#include "Base/FatalError.h"
#include "InstallCommon/CommandLists.h"
#include "InstallCommon/CurrentInstallationEnvironment.h"
#include "InstallCommon/IntallHelper.h"
#include "NorvikCommon/InstallerLog.h"
#include "Platform/SystemPorts.h"

namespace InstallCommon {

namespace {

InstallatedNorvikAntivirusType installedType() {
    const std::unique_ptr<Platform::Bundle> mainBundle =
        Platform::SystemPorts::current().bundles->mainBundle();
    return CurrentInstallationEnvironment::shared().checkNorvikAntivirusInstallType(*mainBundle);
}

}  // namespace

InstallationHelperClient::InstallationHelperClient()
    : XPCClient(std::string(InstallHelper::machServiceName), true) {}

InstallationHelperClient::InstallationHelperClient(std::string machServiceName, bool isServicePrivileged)
    : XPCClient(std::move(machServiceName), isServicePrivileged) {
    Base::fatalError(
        "Use of unimplemented initializer 'init(machServiceName:isServicePrivileged:)' for class "
        "'InstallCommon.InstallationHelperClient'");
}

bool InstallationHelperClient::canUninstall() const {
    switch (installedType()) {
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

InstallationHelperClient::EnvironmentCheck InstallationHelperClient::checkInstallationEnvironment() const {
    if (CurrentInstallationEnvironment::shared().otherAntivirusInstalled()) {
        NorvikCommon::logInstallerLine("There is other antivirus installed.");
        return {};
    }
    const InstallatedNorvikAntivirusType type = installedType();
    if (type == InstallatedNorvikAntivirusType::installedSameVersion ||
        type == InstallatedNorvikAntivirusType::installedNewerVersion) {
        NorvikCommon::logInstallerLine("Has same or newer Norvik installed.");
        return {};
    }
    return {true, type == InstallatedNorvikAntivirusType::installedUpdateable,
            type == InstallatedNorvikAntivirusType::installedNotUpdateable};
}

void InstallationHelperClient::install(const Base::URL& sourceDirectory,
                                       const std::string& applicationsSubdir,
                                       const std::string& launchdJobsSubdir,
                                       const std::string& supportFilesSubdir) {
    const EnvironmentCheck environment = checkInstallationEnvironment();
    if (!environment.canInstall) {
        NorvikCommon::logInstallerLine("Can not install antivirus.");
        return;
    }
    const PayloadLocations payload = PayloadLocations::inDirectory(sourceDirectory, applicationsSubdir,
                                                                   launchdJobsSubdir, supportFilesSubdir);
    if (environment.shouldOverinstall || shouldOverinstall_) {
        NorvikCommon::logInstallerLine("Overinstall...");
        send(CommandLists::overInstallation(payload));
    } else if (environment.shouldUpdate) {
        NorvikCommon::logInstallerLine("Update...");
        send(CommandLists::update(payload));
    } else {
        NorvikCommon::logInstallerLine("Clean install...");
        send(CommandLists::cleanInstallation(payload));
    }
}

void InstallationHelperClient::uninstall() {
    send(CommandLists::uninstallation());
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
