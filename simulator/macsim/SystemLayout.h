#pragma once

#include <vector>

#include "Support/Machine.h"
#include "macsim/MacBuilder.h"

namespace Simulator {

/// Whether this build can show dialogs in a Mac: it has the program that asks for a password and the maker's
/// frameworks.
inline constexpr bool kHasDialogs = SIMULATOR_HAS_DIALOGS != 0;

/// Lays down the Mac itself: its folders, users, tools, and the mount points of everything that it borrows
/// from the host.
void buildSystem(MacBuilder& mac, const std::vector<User>& users);

/// Folders of the host that every simulated Mac sees, read-only, under the same path.
[[nodiscard]] const std::vector<std::string>& borrowedFolders();

}  // namespace Simulator
