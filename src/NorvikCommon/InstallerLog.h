#pragma once

#include <span>
#include <string>
#include <string_view>

namespace NorvikCommon {

/// The one place where texts reach the system log. Callers pass paths, error descriptions and a peer's or
/// tool's words unescaped; anything that could break out of its line or hide in it is escaped here
/// (Base::displayable). All may be called on any thread.

/// Writes `text` as one entry of one line.
void logLine(std::string_view text);

/// Writes one entry of one line with the shared module's prefix: "[SNTM Installer] " and `text`.
void logInstallerLine(std::string_view text);

/// Writes `text` as one entry of several lines, for the words of a system tool: line feeds and tabs stay. Not
/// those in `names`, which the tool was given and may repeat; nor a line feed before the shared module's
/// prefix: only an entry of our own begins with that.
void logLines(std::string_view text, std::span<const std::string> names);

}  // namespace NorvikCommon
