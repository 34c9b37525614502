#pragma once

#include <memory>
#include <string_view>

#include "InstallCommon/Command.h"

namespace InstallCommon {

/// Has the Launch Services database register the product's support folder again.
class UpdateLaunchServices final : public CodedCommand<UpdateLaunchServices> {
  public:
    using CodedCommand::CodedCommand;

    /// Runs lsregister; its result is ignored (its output is logged by SwiftUtils::execute).
    void execute() const override;

    static constexpr std::string_view runtimeName = "_TtC13InstallCommon20UpdateLaunchServices";
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder) {
        return decoded(coder);
    }
};

}  // namespace InstallCommon
