#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Platform/TaskRunner.h"

namespace Helpers {

/// What launchd says of a job of the system domain.
enum class JobState : std::uint8_t {
    absent,   ///< It is not registered.
    idle,     ///< It is registered and not running.
    running,  ///< It runs, or launchd's answer leaves room for that.
};

/// Asks launchctl and waits for its answer. An answer that is not understood counts as running.
[[nodiscard]] JobState stateOfJob(const std::string& label);

/// Has launchd remove a job and waits until it is gone. True when launchd did that.
bool bootOut(const std::string& label);

/// Starts to have launchd remove a job; null when launchctl cannot be run.
[[nodiscard]] std::unique_ptr<Platform::Task> startBootOut(const std::string& label);

}  // namespace Helpers
