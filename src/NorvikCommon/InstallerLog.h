#pragma once

#include <string_view>

namespace NorvikCommon {

/// Writes one entry to the system log, exactly `text`.
void logLine(std::string_view text);

/// Writes one entry with the shared module's prefix: "[SNTM Installer] " and `text`.
void logInstallerLine(std::string_view text);

}  // namespace NorvikCommon
