#pragma once

#include <string>

namespace Simulator {

/// Removes a folder with everything in it, whoever owns it and however deep it is. Returns whether nothing is
/// left.
[[nodiscard]] bool removeTree(const std::string& folder);

}  // namespace Simulator
