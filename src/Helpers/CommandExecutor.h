#pragma once

#include <memory>

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "Platform/Dispatch.h"

namespace Helpers {

/// Executes command lists, one command after another on one thread, whichever clients they come from. A list
/// that was taken is executed to its end, also when its client goes away: the process stays until then.
class CommandExecutor final : public InstallCommon::CommandExecuting {
  public:
    /// `listener` outlives the executor.
    explicit CommandExecutor(Platform::XPCListener& listener);

    /// Returns at once. After each command the delegate is told, also when the command's work failed.
    void executeWithCommands(InstallCommon::CommandList commands,
                             std::shared_ptr<InstallCommon::CommandExecutingDelegate> delegate) override;

  private:
    Platform::XPCListener& listener_;
    std::unique_ptr<Platform::Queue> queue_;
};

}  // namespace Helpers
