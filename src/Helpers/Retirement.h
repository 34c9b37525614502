#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Helpers/CommandExecutor.h"
#include "Platform/Dispatch.h"
#include "Platform/FileManager.h"
#include "Platform/TaskRunner.h"

namespace Helpers {

/// How both helpers leave nothing behind after a product was removed.
///
/// The list that removes a product deletes the installer helper's own tool and property list. A job stays
/// with launchd until the next restart even if its files are gone, so the jobs have to be removed too, and so
/// does the support helper, which is in no list, with its tool. All of that happens at the end of such a
/// list, before its last report, and never later: anybody who comes after the client has seen the list end
/// finds launchd informed, and the next blessing comes after the removal. A helper that has merely become
/// idle removes nothing, because it cannot know of a client that has just been told that the helper is there.
///
/// Anything that may still be in use stays: nothing is removed while another list waits (that list's end does
/// it), or if the helper's own tool is back (somebody has blessed it again); the support helper is removed
/// only if launchd says that it does not run, and if its tool is the very file that was there when the list
/// began. Any failure on the way leaves something that the next blessing repairs. Nothing is logged: the last
/// line of the log stays the outcome.
class Retirement final : public ListObserver {
  public:
    /// From now on launchd's request to end (SIGTERM) does not end the process but stops `listener`: an
    /// accepted list is executed and reported to its end, as far as launchd's own patience with the job goes
    /// (20 seconds). One per process; it and `listener` live as long as the process.
    Retirement(std::string ownLabel, std::string supportLabel, Platform::XPCListener& listener);

    void listBegins() override;
    /// Takes at most a few seconds longer than launchctl does.
    void listEnds(const std::function<bool()>& isAnotherWaiting) override;

  private:
    [[nodiscard]] bool waitForSupportHelper(const std::function<bool()>& isAnotherWaiting);
    void removeSupportHelper();
    void removeOwnJob();
    [[nodiscard]] bool waitForRequest(Platform::Task& launchctl);

    const std::string ownLabel_;
    const std::string supportLabel_;
    /// Signalled on every request to end.
    std::shared_ptr<Platform::Semaphore> requests_;
    /// The support helper's tool when the list began.
    std::optional<Platform::FileIdentity> supportTool_;
};

}  // namespace Helpers
