// Uninstall Sentrel: with "-s" or "--silent" the whole uninstallation without a dialog, else the window.

#include <string>
#include <vector>

#include "Platform/SystemPorts.h"
#include "Uninstaller/SilentUninstall.h"
#include "Uninstaller/WindowMode.h"

int main(int argc, char* argv[]) {
    Platform::SystemPorts::setCurrent(&Platform::createSystemPorts());
    const std::vector<std::string> args(argv, argv + argc);
    if (Uninstall_Sentrel::isSilent(args)) {
        Uninstall_Sentrel::runSilently();
    } else {
        Uninstall_Sentrel::runWindowApplication(argc, argv);
    }
    return 0;
}
