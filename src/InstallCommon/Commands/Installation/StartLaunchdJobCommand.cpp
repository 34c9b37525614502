#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"

#include <utility>

#include "InstallCommon/FileSystemUtil.h"
#include "SwiftUtils/LaunchctlUtil.h"

namespace InstallCommon {

namespace {

// Intentionally decimal: octal 1204 (sticky, owner writes, others read), not octal 644.
constexpr std::uint16_t kPlistMode = 644;

}  // namespace

std::unique_ptr<StartLaunchdJobCommand> StartLaunchdJobCommand::withAgent(std::string commandDescription,
                                                                          NorvikCommon::LaunchdInfo agent) {
    return std::make_unique<StartLaunchdJobCommand>(std::move(commandDescription), std::move(agent), false);
}

std::unique_ptr<StartLaunchdJobCommand> StartLaunchdJobCommand::withDaemon(std::string commandDescription,
                                                                           NorvikCommon::LaunchdInfo daemon) {
    return std::make_unique<StartLaunchdJobCommand>(std::move(commandDescription), std::move(daemon), true);
}

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

const Base::CodedClass& StartLaunchdJobCommand::staticClass() {
    static const Base::CodedClass kClass{"_TtC13InstallCommon22StartLaunchdJobCommand",
                                         &LaunchdJobCommand::staticClass(),
                                         &decodeJob<StartLaunchdJobCommand>};
    return kClass;
}

}  // namespace InstallCommon
