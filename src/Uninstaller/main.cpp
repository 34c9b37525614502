// Uninstall Sentrel: with "-s" or "--silent" the whole uninstallation without a dialog, else the window.

#include "Platform/SystemPorts.h"
#include "Uninstaller/UninstallerProgram.h"

int main(int argc, char* argv[]) {
    Platform::SystemPorts::setCurrent(&Platform::createSystemPorts());
    Uninstall_Sentrel::runProgram(argc, argv);
    return 0;
}
