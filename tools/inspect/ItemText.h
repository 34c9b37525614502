#pragma once

#include "Platform/FileFacts.h"

namespace Inspect {

/// "file", "folder", "link", "other".
[[nodiscard]] const char* nameOf(Platform::ItemKind kind);

}  // namespace Inspect
