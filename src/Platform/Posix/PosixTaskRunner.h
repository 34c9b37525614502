#pragma once

#include "Platform/TaskRunner.h"

namespace Platform::Posix {

/// posix_spawn(3). A relative path, or a path or argument with a NUL byte in it, cannot be run. If the status
/// of a child is lost, because this process ignores SIGCHLD or waited for the child elsewhere, it counts as
/// exit status 255.
class PosixTaskRunner final : public TaskRunner {
  public:
    [[nodiscard]] std::unique_ptr<Task> launch(
        const std::string& path, const std::optional<std::vector<std::string>>& arguments) override;
};

}  // namespace Platform::Posix
