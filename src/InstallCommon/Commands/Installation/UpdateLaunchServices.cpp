#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"

#include <string>
#include <utility>
#include <vector>

#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"
#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "SwiftUtils/Process+Extensions.h"

namespace InstallCommon {

void UpdateLaunchServices::execute() const {
    const std::vector<std::string> arguments{"-r", "-f",
                                             NorvikCommon::ComponentPathProvider::productAppSupport().path()};
    static_cast<void>(SwiftUtils::execute(NorvikCommon::SystemPathProvider::lsRegisterDatabase(), arguments));
}

const Base::CodedClass& UpdateLaunchServices::staticClass() {
    static const Base::CodedClass kClass{"_TtC13InstallCommon20UpdateLaunchServices",
                                         &CommandConcrete::staticClass(), &decode};
    return kClass;
}

std::unique_ptr<Base::CodedObject> UpdateLaunchServices::decode(Base::Coder& coder) {
    std::optional<std::string> description = decodeDescription(coder);
    return description ? std::make_unique<UpdateLaunchServices>(std::move(*description)) : nullptr;
}

}  // namespace InstallCommon
