#pragma once

#include <string>
#include <string_view>

namespace Inspect {

// Exit statuses that every command has; scan, plan and verify add those of a verdict.
inline constexpr int kDone = 0;
inline constexpr int kRefused = 1;
inline constexpr int kMisuse = 2;

/// Writes "sentrel-inspect: LINE" to standard error and returns `status`.
int fail(int status, const std::string& line);

/// Fails because of a file, in one line; "-" is shown as `standardStream`.
int refuse(const std::string& file, std::string_view standardStream, const std::string& why);

/// Writes `text` to standard output and returns `status`, or fails.
int print(std::string_view text, int status = kDone);

}  // namespace Inspect
