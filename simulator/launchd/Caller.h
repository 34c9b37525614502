#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Simulator {

/// The sender of a request, according to the kernel.
struct Caller {
    pid_t pid = 0;
    /// Effective user id.
    std::uint32_t uid = 0;
};

/// The start of a process, in the kernel's ticks: tells it from a later one with the same id. Nothing if it
/// is gone.
[[nodiscard]] std::optional<std::uint64_t> startOfProcess(pid_t pid);

/// The executable of a process, without the kernel's " (deleted)"; nothing if it is gone.
[[nodiscard]] std::optional<std::string> executableOfProcess(pid_t pid);

/// The user ids of a process.
struct ProcessUsers {
    std::uint32_t real = 0;
    std::uint32_t effective = 0;
};

/// Returns nothing if the process is gone.
[[nodiscard]] std::optional<ProcessUsers> usersOfProcess(pid_t pid);

/// The effective user id of a process; nothing if it is gone.
[[nodiscard]] std::optional<std::uint32_t> userOfProcess(pid_t pid);

/// All process ids, ascending.
[[nodiscard]] std::vector<pid_t> allProcesses();

}  // namespace Simulator
