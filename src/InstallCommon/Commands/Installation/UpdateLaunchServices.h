#pragma once

#include <memory>

#include "InstallCommon/Command.h"

namespace InstallCommon {

/// Has the Launch Services database register the product's support folder again.
class UpdateLaunchServices final : public CommandConcrete {
  public:
    using CommandConcrete::CommandConcrete;

    /// Runs lsregister; its result is ignored (its output is logged by SwiftUtils::execute).
    void execute() const override;

    [[nodiscard]] static const Base::CodedClass& staticClass();
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return staticClass(); }

  private:
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder);
};

}  // namespace InstallCommon
