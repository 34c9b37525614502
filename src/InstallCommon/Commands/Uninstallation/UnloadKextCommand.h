#pragma once

#include <memory>
#include <string>

#include "InstallCommon/Command.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace InstallCommon {

/// Unloads a kernel extension.
class UnloadKextCommand final : public CommandConcrete {
  public:
    UnloadKextCommand(std::string commandDescription, NorvikCommon::KextInfo kext);

    [[nodiscard]] const NorvikCommon::KextInfo& kext() const { return kext_; }

    /// Asks the kernel-extension manager once; a result other than 0 is one log line. A record without a
    /// bundle identifier unloads nothing.
    void execute() const override;

    [[nodiscard]] static const Base::CodedClass& staticClass();
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return staticClass(); }
    void encode(Base::Coder& coder) const override;

  private:
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder);

    NorvikCommon::KextInfo kext_;
};

}  // namespace InstallCommon
