#include "InstallCommon/InstallationUtils.h"

#include <csignal>

#include "InstallCommon/CurrentInstallationEnvironment.h"
#include "NorvikCommon/InstallerLog.h"
#include "NorvikCommon/PMProcessMonitor.h"
#include "Platform/SystemPorts.h"

namespace InstallCommon {

namespace {

void killOneProcess(const NorvikCommon::PMProcess& process, const std::string& name) {
    const int result = Platform::SystemPorts::current().processes->kill(process.pid, SIGKILL);
    const std::string code = std::to_string(result);
    NorvikCommon::logInstallerLine("Kill result for pid " + std::to_string(process.pid) + ": " + code);
    if (result != 0) {
        NorvikCommon::logInstallerLine("Failed to kill process " + name + ". Return code: " + code + ".");
    }
}

}  // namespace

void InstallationUtils::killProcess(const std::string& name) {
    for (const NorvikCommon::PMProcess& process :
         NorvikCommon::PMProcessMonitor::defaultMonitor().allProcessesWithName(name)) {
        killOneProcess(process, name);
    }
}

const InstallationEnvironment& InstallationUtils::installationEnvironment() {
    return CurrentInstallationEnvironment::shared();
}

}  // namespace InstallCommon
