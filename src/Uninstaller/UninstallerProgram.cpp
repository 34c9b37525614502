#include "Uninstaller/UninstallerProgram.h"

#include <string>
#include <vector>

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "Uninstaller/SilentUninstall.h"
#include "Uninstaller/WindowMode.h"

namespace Uninstall_Sentrel {

void runProgram(int argc, char* argv[]) {
    InstallCommon::registerCommandListClasses();
    const std::vector<std::string> args(argv, argv + argc);
    if (isSilent(args)) {
        runSilently();
    } else {
        runWindowApplication(argc, argv);
    }
}

}  // namespace Uninstall_Sentrel
