#include "NorvikCommon/InstallerLog.h"

#include <string>

#include "Platform/SystemPorts.h"

namespace NorvikCommon {

void logLine(std::string_view text) {
    Platform::SystemPorts::current().log.log(text);
}

void logInstallerLine(std::string_view text) {
    logLine(std::string("[SNTM Installer] ").append(text));
}

}  // namespace NorvikCommon
