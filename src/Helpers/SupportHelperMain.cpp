// com.norvik.SupportPrivilegedHelper: installs the runtime support package as root. Started on demand by
// launchd.

#include "Helpers/RuntimePackage.h"
#include "Helpers/SupportHelper.h"
#include "Platform/SystemPorts.h"

int main() {
    Platform::SystemPorts::setCurrent(&Platform::createSystemPorts());
    return Helpers::SupportHelper::serve(Helpers::kRuntimePackage) ? 0 : 1;
}
