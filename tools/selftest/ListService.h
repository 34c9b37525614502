#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Events.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#import "Loopback.h"

namespace Selftest {

using Report = std::pair<std::string, std::int32_t>;

/// Takes lists as the installer helper does and reports each command, without executing any. `events` hears
/// "list of N commands" for each.
class ListService final : public InstallCommon::CommandExecuting {
  public:
    explicit ListService(std::shared_ptr<Events> events) : events_(std::move(events)) {}

    void executeWithCommands(InstallCommon::CommandList commands,
                             std::shared_ptr<InstallCommon::CommandExecutingDelegate> delegate) override;

    /// The program's own archive of the last list.
    [[nodiscard]] std::vector<std::uint8_t> archive();

  private:
    std::shared_ptr<Events> events_;
    std::mutex mutex_;
    std::vector<std::uint8_t> archive_;
};

/// Keeps the reports; `events` hears one event for each.
class Reports final : public InstallCommon::CommandExecutingDelegate {
  public:
    void commandExecutingDidExecuteCommand(const std::string& description, std::int32_t withWeight) override;

    [[nodiscard]] bool waitForCount(std::size_t count) { return events_.waitForCount(count); }
    [[nodiscard]] std::vector<Report> all();

  private:
    Events events_;
    std::mutex mutex_;
    std::vector<Report> reports_;
};

/// A loopback whose service is `service`.
[[nodiscard]] std::unique_ptr<Loopback> makeListLoopback(const std::shared_ptr<Events>& events,
                                                         const std::shared_ptr<ListService>& service);

/// The 75 commands of an uninstallation.
[[nodiscard]] InstallCommon::CommandList uninstallCommands();
/// The program's own archive of `commands`.
[[nodiscard]] std::vector<std::uint8_t> archiveOf(const InstallCommon::CommandList& commands);
/// Sends `commands` over `client`, which has been resumed.
void sendList(Platform::XPCConnection& client, InstallCommon::CommandList commands,
              std::shared_ptr<InstallCommon::CommandExecutingDelegate> delegate);

}  // namespace Selftest
