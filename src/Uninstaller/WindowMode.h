#pragma once

namespace Uninstall_Sentrel {

/// Hands control to the application framework until the application quits.
void runWindowApplication(int argc, char* argv[]);

}  // namespace Uninstall_Sentrel
