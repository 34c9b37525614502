#pragma once

#include "Support/Files.h"
#include "macsim/Commands.h"
#include "macsim/MacRoot.h"

namespace Simulator {

/// Reserves a Mac for this process while the descriptor lives. Throws a Refusal if the Mac is running.
[[nodiscard]] Descriptor lockMac(const MacRoot& mac);

/// Boots a Mac that this process has locked, runs the command and records the state. Returns the exit status;
/// throws a Refusal if the Mac does not come up.
int runLocked(const MacRoot& mac, const RunOptions& options);

}  // namespace Simulator
