#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>
#include <vector>

#include "Platform/FileFacts.h"

namespace Platform::Posix {

/// The result of stat(2), in the port's terms.
[[nodiscard]] ItemFacts factsOf(const struct stat& status);

/// FileFacts::measure. Folders are handed out to a few threads by their paths; one whose path is longer than
/// the system accepts counts as unread.
[[nodiscard]] TreeSize countTree(const std::string& item, const std::vector<ItemIdentity>& without,
                                 const std::function<void(const TreeSize&)>& counted);

}  // namespace Platform::Posix
