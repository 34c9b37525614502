#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "InstallCommon/Command.h"

namespace InstallCommon {

/// Kills every running process with a given name.
class KillProcessCommand final : public CodedCommand<KillProcessCommand> {
  public:
    /// `process` is the name as the process monitor reports it.
    KillProcessCommand(std::string commandDescription, std::string process);

    [[nodiscard]] const std::string& process() const { return process_; }

    /// The lines are those of InstallationUtils::killProcess; none if there is no such process.
    void execute() const override;

    static constexpr std::string_view runtimeName = "_TtC13InstallCommon18KillProcessCommand";
    void encode(Base::Coder& coder) const override;
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder);

  private:
    std::string process_;
};

}  // namespace InstallCommon
