#pragma once

#include <string>

#include "Platform/Authorization.h"

namespace NorvikCommon {

/// Installs (blesses) the privileged helper with this launchd label from the running program's bundle.
/// Returns false, without asking the system and without a log line, if the authorization has no reference;
/// false with the line "SMJobBless error: " + the error if the system refuses. Blocks the calling thread.
[[nodiscard]] bool BlessHelperWithLabel(const std::string& label,
                                        const Platform::SFAuthorization& authorization);

}  // namespace NorvikCommon
