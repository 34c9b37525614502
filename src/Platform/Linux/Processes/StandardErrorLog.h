#pragma once

#include <string_view>

namespace Platform::Linux {

/// Whether standard error leads anywhere: to a terminal, file, pipe or socket. launchd's children have
/// /dev/null there, which does not count.
[[nodiscard]] bool isStandardErrorRead();

/// Writes an entry to standard error in NSLog's form, "2026-11-22 08:30:00.123 NAME[PID:THREAD] text", the
/// time local, followed by one line feed. Gives up on an entry that cannot be written; a reader that has gone
/// does not end the process. May be called on any thread.
void writeToStandardError(std::string_view program, std::string_view text);

}  // namespace Platform::Linux
