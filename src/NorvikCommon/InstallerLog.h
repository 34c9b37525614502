#pragma once

#include <span>
#include <string>
#include <string_view>

namespace NorvikCommon {

/// The one place where texts reach the system log. Callers pass paths, error descriptions and whatever a peer
/// or a tool said as they are; what could leave its line or hide in it is escaped here (Base::displayable).
/// All may be called on any thread.

/// Writes `text` as one entry of one line.
void logLine(std::string_view text);

/// Writes one entry of one line with the shared module's prefix: "[SNTM Installer] " and `text`.
void logInstallerLine(std::string_view text);

/// Writes `text` as one entry of several lines: line feeds and tabs stay, for the words of a system tool. Not
/// those in `names`, which are what the tool was given and may repeat; nor a line feed before the shared
/// module's prefix: only an entry of our own begins with that.
void logLines(std::string_view text, std::span<const std::string> names);

}  // namespace NorvikCommon
