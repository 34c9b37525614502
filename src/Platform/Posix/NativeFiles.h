#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <ctime>

namespace Platform::Posix {

// The few file calls that differ between the systems; each system has its own source file for them. All
// return 0 or a descriptor on success, -1 with errno on failure.

/// Opens the item itself, a link as the link (O_SYMLINK, or O_PATH with O_NOFOLLOW), for the two operations
/// below.
[[nodiscard]] int openItemItself(const char* path);
/// fchmod for such a descriptor; EOPNOTSUPP for a link where links have no mode of their own.
[[nodiscard]] int setModeOfOpenItem(int item, mode_t mode);
/// fchown for such a descriptor.
[[nodiscard]] int setOwnerOfOpenItem(int item, uid_t owner, gid_t group);

/// Opens a folder as the starting point of descriptor-relative calls, following links. Where the system can,
/// permission to search the folder is enough.
[[nodiscard]] int openFolderForLookup(const char* path);

/// When an item's contents or attributes were last changed; the member has another name on each system.
[[nodiscard]] timespec changeTime(const struct stat& status);

}  // namespace Platform::Posix
