#pragma once

#include "Look.h"

namespace Inventory {

/// Fills in `places`, `hasInstallationFolder` and `hasRuntimeSupport`.
void lookAtPlaces(const Viewpoint& viewpoint, Inventory& inventory);

/// Whether an error of FileFacts::look means that there is no such item.
[[nodiscard]] bool meansAbsent(const Platform::Error& error);

}  // namespace Inventory
