#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Simulator {

/// Who sent a request, as the kernel says.
struct Caller {
    pid_t pid = 0;
    /// Effective user id.
    std::uint32_t uid = 0;
};

/// When a process began, in the kernel's ticks: tells it from a later one with the same id. Nothing when it
/// is gone.
[[nodiscard]] std::optional<std::uint64_t> startOfProcess(pid_t pid);

/// The executable of a process; nothing when it is gone. Without the kernel's " (deleted)".
[[nodiscard]] std::optional<std::string> executableOfProcess(pid_t pid);

/// The user ids of a process.
struct ProcessUsers {
    std::uint32_t real = 0;
    std::uint32_t effective = 0;
};

/// Nothing when the process is gone.
[[nodiscard]] std::optional<ProcessUsers> usersOfProcess(pid_t pid);

/// The effective user id of a process; nothing when it is gone.
[[nodiscard]] std::optional<std::uint32_t> userOfProcess(pid_t pid);

/// All process ids, ascending.
[[nodiscard]] std::vector<pid_t> allProcesses();

}  // namespace Simulator
