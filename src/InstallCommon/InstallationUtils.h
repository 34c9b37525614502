#pragma once

#include <string>

#include "InstallCommon/InstallationEnvironment.h"
#include "NorvikCommon/PMProcess.h"

namespace InstallCommon {

/// Small operations shared by commands and programs.
struct InstallationUtils {
    InstallationUtils() = delete;

    /// Sends signal 9 once to every process with this name, in the process monitor's
    /// order, without waiting. Logs for each "[SNTM Installer] Kill result for pid " +
    /// pid + ": " + result, and for a result other than 0 also "[SNTM Installer] Failed
    /// to kill process " + name + ". Return code: " + result + ".". No such process: no
    /// line.
    static void killProcess(const std::string& name);

    /// CurrentInstallationEnvironment::shared.
    [[nodiscard]] static const InstallationEnvironment& installationEnvironment();
};

}  // namespace InstallCommon
