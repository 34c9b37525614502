#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"

#include "NorvikCommon/InstallerLog.h"
#include "NorvikCommon/UIDUtil.h"
#include "Platform/SystemPorts.h"
#include "SwiftUtils/LaunchctlUtil.h"

namespace InstallCommon {

namespace {

constexpr std::uint32_t kPauseAfterBootout = 5;

}  // namespace

void StopLaunchdJobCommand::execute() const {
    if (!launchdJob().label || !launchdJob().plistLocation()) {
        return;
    }
    if (isDaemon()) {
        bootoutDaemon();
    } else {
        bootoutAgent();
    }
}

void StopLaunchdJobCommand::bootoutDaemon() const {
    if (!SwiftUtils::LaunchctlUtil::isDaemonRegistered(*launchdJob().label)) {
        return;
    }
    if (SwiftUtils::LaunchctlUtil::bootoutDaemon(*launchdJob().plistLocation())) {
        Platform::SystemPorts::current().clock->sleep(kPauseAfterBootout);
    }
}

void StopLaunchdJobCommand::bootoutAgent() const {
    // User id 0 comes first, and once more if the list of users has it.
    NorvikCommon::UIDUtil::performWithUid(0, [this] { bootoutAgentOfUser(0); });
    forEachUser([this](std::uint32_t userId) { bootoutAgentOfUser(userId); });
}

void StopLaunchdJobCommand::bootoutAgentOfUser(std::uint32_t userId) const {
    // The line says "Disable" although the job is only booted out.
    NorvikCommon::logInstallerLine("Disable & bootout agent " + *launchdJob().label + " for " +
                                   std::to_string(userId));
    static_cast<void>(SwiftUtils::LaunchctlUtil::bootoutAgent(*launchdJob().plistLocation(), userId));
}

}  // namespace InstallCommon
