#pragma once

#include <optional>
#include <string>

#include "Platform/Error.h"

namespace Platform::Posix {

/// Removes the entry `name` of the open folder `parent`, a folder with everything in it. `path` is its name
/// in messages. The promises are those of FileManager::removeItem.
///
/// A mount point, inside the tree (a folder of another device than `parent`) or the entry itself, is not
/// entered and gives EBUSY: the mounted file system is not part of the tree. Entries that somebody adds while
/// it runs are removed too, within a bounded number of attempts.
[[nodiscard]] std::optional<Error> removeTree(int parent, const std::string& name, const std::string& path);

}  // namespace Platform::Posix
