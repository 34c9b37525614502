#pragma once

namespace Simulator {

/// Makes sure that this process may make namespaces and use other users' ids: as an ordinary user it starts
/// itself again as root of a user namespace of its own and does not return. Throws a Refusal that names the
/// setting to change where the kernel denies that.
void needNamespaces(char** arguments);

}  // namespace Simulator
