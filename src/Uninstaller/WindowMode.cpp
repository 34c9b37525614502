#include "Uninstaller/WindowMode.h"

#include <cstdio>

namespace Uninstall_Sentrel {

void runWindowApplication(int /*argc*/, char* /*argv*/[]) {
    std::fputs("This build has no window. Run it with --silent to uninstall.\n", stderr);
}

}  // namespace Uninstall_Sentrel
