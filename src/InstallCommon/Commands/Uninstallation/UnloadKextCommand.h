#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "InstallCommon/Command.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace InstallCommon {

/// Unloads a kernel extension.
class UnloadKextCommand final : public CodedCommand<UnloadKextCommand> {
  public:
    UnloadKextCommand(std::string commandDescription, NorvikCommon::KextInfo kext);

    [[nodiscard]] const NorvikCommon::KextInfo& kext() const { return kext_; }

    /// Asks the kernel-extension manager once; a result other than 0 is one log line. A record without a
    /// bundle identifier unloads nothing.
    void execute() const override;

    static constexpr std::string_view runtimeName = "_TtC13InstallCommon17UnloadKextCommand";
    void encode(Base::Coder& coder) const override;
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder);

  private:
    NorvikCommon::KextInfo kext_;
};

}  // namespace InstallCommon
