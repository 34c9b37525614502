#pragma once

#include <memory>
#include <string>

#include "InstallCommon/Command.h"

namespace InstallCommon {

/// Kills every running process with a given name.
class KillProcessCommand final : public CommandConcrete {
  public:
    /// `process` is the name as the process monitor reports it.
    KillProcessCommand(std::string commandDescription, std::string process);

    [[nodiscard]] const std::string& process() const { return process_; }

    /// The lines are those of InstallationUtils::killProcess; none if there is no such process.
    void execute() const override;

    [[nodiscard]] static const Base::CodedClass& staticClass();
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return staticClass(); }
    void encode(Base::Coder& coder) const override;

  private:
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder);

    std::string process_;
};

}  // namespace InstallCommon
