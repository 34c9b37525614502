#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Platform::Linux {

/// The content of a file of /proc/PID, at most `limit` bytes of it. Returns nothing if the process is gone or
/// denies access.
[[nodiscard]] std::optional<std::string> readProcessFile(std::int32_t pid, const char* file,
                                                         std::size_t limit);

/// The path of a process's executable. The " (deleted)" that the kernel appends to an unlinked file's path is
/// stripped. Empty for a process without an executable, or whose executable must not be seen.
[[nodiscard]] std::string executablePath(std::int32_t pid);

/// The part after the last slash.
[[nodiscard]] std::string fileNameOf(const std::string& path);

}  // namespace Platform::Linux
