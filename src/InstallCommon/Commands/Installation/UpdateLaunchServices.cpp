#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"

#include <string>
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

}  // namespace InstallCommon
