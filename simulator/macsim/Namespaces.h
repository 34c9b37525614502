#pragma once

namespace Simulator {

/// Makes sure that this process may use other users' ids and, `toRun` a Mac, make namespaces: as an ordinary
/// user it starts itself again as root of a new user namespace and does not return. Throws a Refusal that
/// names the setting to change if the kernel denies that.
void needNamespaces(char** arguments, bool toRun);

}  // namespace Simulator
