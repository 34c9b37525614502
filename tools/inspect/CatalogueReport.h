#pragma once

#include <string>

#include "RecordJson.h"

namespace Inspect {

/// Everything that the three path providers know, the earlier versions' lists included: an object with
/// SystemPathProvider, ComponentPathProvider and FeaturePathProvider, each an object keyed by property name.
/// A list is an array; derived URLs of bundles are left out.
[[nodiscard]] Json catalogue();

/// The same for people: one group for each provider, three aligned columns for property, field and value.
/// Entries of a list are counted from 1.
[[nodiscard]] std::string catalogueText(const Json& catalogue);

}  // namespace Inspect
