#pragma once

#include "launchd/DistantNames.h"
#include "launchd/JobRegistry.h"
#include "launchd/LoadedExtensions.h"

namespace Simulator {

/// Writes the current state of the Mac to /var/macsim/state.json: jobs per domain, processes (not launchd
/// itself), loaded kernel extensions, names of distant objects, and the exit status of the session's
/// command.
[[nodiscard]] bool recordMachineState(const JobRegistry& jobs, const LoadedExtensions& extensions,
                                      const DistantNames& distantNames, int exitStatus);

}  // namespace Simulator
