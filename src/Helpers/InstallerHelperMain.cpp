// com.norvik.InstallerHelper: executes command lists as root. Started on demand by launchd.

#include "Helpers/InstallerHelper.h"
#include "Platform/SystemPorts.h"

int main() {
    Platform::SystemPorts::setCurrent(&Platform::createSystemPorts());
    Helpers::InstallerHelper* const helper = Helpers::InstallerHelper::make().release();
    if (helper == nullptr) {
        return 1;
    }
    helper->serve();
    return 0;
}
