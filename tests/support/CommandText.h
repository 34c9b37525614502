#pragma once

#include <string>
#include <vector>

#include "InstallCommon/Command.h"

namespace TestSupport {

/// Commands in one line each, "class|description|operands", for comparisons of whole lists.
[[nodiscard]] std::vector<std::string> commandTexts(const InstallCommon::CommandList& commands);

}  // namespace TestSupport
