#pragma once

#include <cstdint>
#include <string_view>

#include "InstallCommon/Commands/LaunchdJobCommand.h"

namespace InstallCommon {

/// Enables and bootstraps a launchd job.
class StartLaunchdJobCommand final : public ConcreteJobCommand<StartLaunchdJobCommand> {
  public:
    using ConcreteJobCommand::ConcreteJobCommand;

    /// Sets the plist's mode, then enables and bootstraps the daemon, or the agent for every local user.
    /// Nothing is logged here. A record without a label or a plist starts nothing.
    void execute() const override;

    static constexpr std::string_view runtimeName = "_TtC13InstallCommon22StartLaunchdJobCommand";

  private:
    void installDaemon() const;
    void installAgent() const;
};

}  // namespace InstallCommon
