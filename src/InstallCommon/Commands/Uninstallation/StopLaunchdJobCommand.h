#pragma once

#include <cstdint>
#include <string_view>

#include "InstallCommon/Commands/LaunchdJobCommand.h"

namespace InstallCommon {

/// Boots a launchd job out.
class StopLaunchdJobCommand final : public ConcreteJobCommand<StopLaunchdJobCommand> {
  public:
    using ConcreteJobCommand::ConcreteJobCommand;

    /// A registered daemon is booted out, and the thread sleeps 5 seconds if that succeeded. An agent is
    /// booted out for user id 0 and for every local user, each with a log line, registered or not. A record
    /// without a label or a plist boots nothing out.
    void execute() const override;

    static constexpr std::string_view runtimeName = "_TtC13InstallCommon21StopLaunchdJobCommand";

  private:
    void bootoutDaemon() const;
    void bootoutAgent() const;
    void bootoutAgentOfUser(std::uint32_t userId) const;
};

}  // namespace InstallCommon
