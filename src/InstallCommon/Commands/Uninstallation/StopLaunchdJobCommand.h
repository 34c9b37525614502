#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "InstallCommon/Commands/LaunchdJobCommand.h"

namespace InstallCommon {

/// Boots a launchd job out.
class StopLaunchdJobCommand final : public LaunchdJobCommand {
  public:
    using LaunchdJobCommand::LaunchdJobCommand;

    [[nodiscard]] static std::unique_ptr<StopLaunchdJobCommand> withAgent(std::string commandDescription,
                                                                          NorvikCommon::LaunchdInfo agent);
    [[nodiscard]] static std::unique_ptr<StopLaunchdJobCommand> withDaemon(std::string commandDescription,
                                                                           NorvikCommon::LaunchdInfo daemon);

    /// A registered daemon is booted out, and the thread sleeps 5 seconds if that succeeded. An agent is
    /// booted out for user id 0 and for every local user, each with a log line, registered or not. A record
    /// without a label or a plist boots nothing out.
    void execute() const override;

    [[nodiscard]] static const Base::CodedClass& staticClass();
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return staticClass(); }

  private:
    void bootoutDaemon() const;
    void bootoutAgent() const;
    void bootoutAgentOfUser(std::uint32_t userId) const;
};

}  // namespace InstallCommon
