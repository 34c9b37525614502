#pragma once

#include <cstdint>
#include <functional>

#include "Base/URL.h"

namespace Platform::Posix {

/// See FileManager::setOwnerOfContents.
void setOwnerBelow(const Base::URL& directory, std::uint32_t owner, std::uint32_t group,
                   const std::function<void(const Base::URL& item, int error)>& failed);

}  // namespace Platform::Posix
