#pragma once

namespace Uninstall_Sentrel {

/// The program behind `main`, on the ports in force: registers the classes that travel before anything else
/// is loaded, then runs silently or with a window, as the command line says. Returns when it is done.
void runProgram(int argc, char* argv[]);

}  // namespace Uninstall_Sentrel
