#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <functional>
#include <string>

#include "Base/URL.h"

namespace Platform::Posix {

/// Changes owner and group of an item that was opened by openItemItself() or as a folder; `status` is its
/// own. Hard links and set-id bits are treated as FileManager::setOwner says. Returns 0 or errno.
[[nodiscard]] int giveItem(int item, const struct stat& status, std::uint32_t owner, std::uint32_t group);

/// Does so for everything below the entry `name` of the open folder `parent`, which messages call `path`. See
/// FileManager::setOwnerOfContents.
void setOwnerBelow(int parent, const std::string& name, const std::string& path, std::uint32_t owner,
                   std::uint32_t group, const std::function<void(const Base::URL& item, int error)>& failed);

}  // namespace Platform::Posix
