#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Platform {

/// Why a child process ended (NSTaskTerminationReason).
enum class TerminationReason : std::int32_t { exit = 1, uncaughtSignal = 2 };

/// A started child process, with a pipe each on its standard output and error.
class Task {
  public:
    /// Closes the pipes and, if the child was never waited for, waits for it.
    virtual ~Task() = default;

    /// Blocks until the child has ended.
    virtual void waitUntilExit() = 0;
    /// Whether the child still runs; does not block.
    [[nodiscard]] virtual bool isRunning() = 0;
    /// Ends the child at once if it still runs (SIGKILL), and waits for it.
    virtual void kill() = 0;
    /// Everything the child wrote, as bytes, until the end of the pipe. Blocks while anybody holds the other
    /// end.
    [[nodiscard]] virtual std::string readOutputToEnd() = 0;
    [[nodiscard]] virtual std::string readErrorToEnd() = 0;
    /// The exit status, or the number of the signal. Only after waitUntilExit.
    [[nodiscard]] virtual std::int32_t terminationStatus() const = 0;
    [[nodiscard]] virtual TerminationReason terminationReason() const = 0;
};

/// Starts child processes (NSTask; posix_spawn).
class TaskRunner {
  public:
    virtual ~TaskRunner() = default;

    /// Starts the executable at the absolute `path`; `arguments` exclude the path itself, nothing means
    /// none. Standard input and the environment are inherited, no other descriptor is; no shell is involved;
    /// signal mask and handlers are reset. Returns null if the path cannot be run. May be called on any
    /// thread.
    [[nodiscard]] virtual std::unique_ptr<Task> launch(
        const std::string& path, const std::optional<std::vector<std::string>>& arguments) = 0;
};

}  // namespace Platform
