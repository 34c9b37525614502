#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "Platform/Dispatch.h"

namespace Helpers {

/// Acts around each list. Called on the thread that executes the commands.
class ListObserver {
  public:
    virtual ~ListObserver() = default;

    /// A list is about to be executed.
    virtual void listBegins() = 0;
    /// The last command of a list has run, and its report waits for this call to return: until then the
    /// list's client cannot consider the list finished. `isAnotherWaiting` tells whether another list has
    /// arrived meanwhile; that list's own end follows.
    virtual void listEnds(const std::function<bool()>& isAnotherWaiting) = 0;
};

/// Executes command lists, one command after another on one thread, whichever clients they come from. An
/// accepted list is executed to its end even if its client goes away: the process stays until then.
class CommandExecutor final : public InstallCommon::CommandExecuting {
  public:
    /// `listener` and `observer` outlive the executor.
    CommandExecutor(Platform::XPCListener& listener, ListObserver& observer);

    /// Returns at once. The delegate is told after each command, even if the command's work failed.
    void executeWithCommands(InstallCommon::CommandList commands,
                             std::shared_ptr<InstallCommon::CommandExecutingDelegate> delegate) override;

  private:
    void execute(const InstallCommon::CommandList& commands,
                 InstallCommon::CommandExecutingDelegate& delegate);

    Platform::XPCListener& listener_;
    ListObserver& observer_;
    /// Lists that were accepted and are not done.
    std::atomic<int> lists_{0};
    std::unique_ptr<Platform::Queue> queue_;
};

}  // namespace Helpers
