#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "InstallCommon/Commands/LaunchdJobCommand.h"

namespace InstallCommon {

/// Enables and bootstraps a launchd job.
class StartLaunchdJobCommand final : public LaunchdJobCommand {
  public:
    using LaunchdJobCommand::LaunchdJobCommand;

    [[nodiscard]] static std::unique_ptr<StartLaunchdJobCommand> withAgent(std::string commandDescription,
                                                                           NorvikCommon::LaunchdInfo agent);
    [[nodiscard]] static std::unique_ptr<StartLaunchdJobCommand> withDaemon(std::string commandDescription,
                                                                            NorvikCommon::LaunchdInfo daemon);

    /// Sets the plist's mode, then enables and bootstraps the daemon, or the agent for every local user.
    /// Nothing is logged here. A record without a label or a plist starts nothing.
    void execute() const override;

    [[nodiscard]] static const Base::CodedClass& staticClass();
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return staticClass(); }

  private:
    void installDaemon() const;
    void installAgent() const;
};

}  // namespace InstallCommon
