#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"

#include "InstallCommon/FileSystemUtil.h"
#include "SwiftUtils/LaunchctlUtil.h"

namespace InstallCommon {

namespace {

// Intentionally decimal: octal 1204 (sticky, owner writes, others read), not octal 644.
constexpr std::uint16_t kPlistMode = 644;

}  // namespace

void StartLaunchdJobCommand::execute() const {
    if (!launchdJob().label || !launchdJob().plistLocation()) {
        return;
    }
    FileSystemUtil::setPermissions(kPlistMode, *launchdJob().plistLocation());
    if (isDaemon()) {
        installDaemon();
    } else {
        installAgent();
    }
}

void StartLaunchdJobCommand::installDaemon() const {
    SwiftUtils::LaunchctlUtil::enableDaemon(*launchdJob().label);
    SwiftUtils::LaunchctlUtil::bootstrapDaemon(*launchdJob().plistLocation());
}

void StartLaunchdJobCommand::installAgent() const {
    forEachUser([this](std::uint32_t userId) {
        SwiftUtils::LaunchctlUtil::enableAgent(*launchdJob().label, userId);
        SwiftUtils::LaunchctlUtil::bootstrapAgent(*launchdJob().plistLocation(), userId);
    });
}

}  // namespace InstallCommon
