#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Platform::Linux {

/// The whole of a file of /proc/PID, at most `limit` bytes of it. Nothing when the process is gone or denies
/// it.
[[nodiscard]] std::optional<std::string> readProcessFile(std::int32_t pid, const char* file,
                                                         std::size_t limit);

/// The path of a process's executable. Where the file has been unlinked the kernel adds " (deleted)"; that is
/// taken off. Empty for a process without one, or whose executable may not be seen.
[[nodiscard]] std::string executablePath(std::int32_t pid);

/// What follows the last slash.
[[nodiscard]] std::string fileNameOf(const std::string& path);

}  // namespace Platform::Linux
