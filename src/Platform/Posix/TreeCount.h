#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>
#include <vector>

#include "Platform/FileFacts.h"

namespace Platform::Posix {

/// What stat(2) says, in the port's terms.
[[nodiscard]] ItemFacts factsOf(const struct stat& status);

/// FileFacts::measure. Folders are handed out to a few threads by their paths; one whose path is longer than
/// the system takes counts as unread.
[[nodiscard]] TreeSize countTree(const std::string& item, const std::vector<ItemIdentity>& without,
                                 const std::function<void(const TreeSize&)>& counted);

}  // namespace Platform::Posix
