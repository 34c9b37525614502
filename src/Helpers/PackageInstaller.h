#pragma once

#include <optional>

#include "Base/URL.h"
#include "Platform/Error.h"

namespace Helpers {

/// Installs a flat package on the running system with the system's installer tool and waits for it. Returns
/// the error, in the tool's own words where it has any; nothing on success. Logs nothing.
[[nodiscard]] std::optional<Platform::Error> installPackage(const Base::URL& package);

}  // namespace Helpers
