#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Platform/TaskRunner.h"

namespace Helpers {

/// launchd's answer about a job of the system domain.
enum class JobState : std::uint8_t {
    absent,   ///< It is not registered.
    idle,     ///< It is registered and not running.
    running,  ///< It runs, or launchd's answer does not rule that out.
};

/// Asks launchctl and waits for its answer. An unexpected answer counts as running.
[[nodiscard]] JobState stateOfJob(const std::string& label);

/// Has launchd remove a job and waits until it is gone. True if launchd did that.
bool bootOut(const std::string& label);

/// Starts removing a job from launchd; null if launchctl cannot be run.
[[nodiscard]] std::unique_ptr<Platform::Task> startBootOut(const std::string& label);

}  // namespace Helpers
