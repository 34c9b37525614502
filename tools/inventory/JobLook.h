#pragma once

#include "Look.h"

namespace Inventory {

/// Fills in `jobs` and `overrides` of the system's domain and those of all local users, logged in or not.
void lookAtJobs(const Viewpoint& viewpoint, Inventory& inventory);

}  // namespace Inventory
