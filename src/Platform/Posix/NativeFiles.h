#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <ctime>

namespace Platform::Posix {

// The few file calls that differ between the systems; each system has its own source file for them. All
// return 0 or a descriptor on success, -1 with errno on failure.

/// Opens an entry of the open folder `parent` as itself, a link as the link (O_SYMLINK, or O_PATH with
/// O_NOFOLLOW), for the two operations below.
[[nodiscard]] int openItemItself(int parent, const char* name);
/// fchmod for such a descriptor; EOPNOTSUPP for a link where links have no mode of their own.
[[nodiscard]] int setModeOfOpenItem(int item, mode_t mode);
/// fchown for such a descriptor or that of an open folder. Whether a file then has its set-id bits is the
/// system's choice: see giveItem() in TreeOwnership.h, which settles it.
[[nodiscard]] int setOwnerOfOpenItem(int item, uid_t owner, gid_t group);
/// Whether a file that root gives away keeps its set-id bits, or loses them even if it had that owner
/// already.
[[nodiscard]] bool changeOfOwnerKeepsSetIdBits();

/// Opens the folder `name` of the open folder `parent` as the starting point of descriptor-relative calls; a
/// link gives ENOTDIR or ELOOP. Where the system can, permission to search the folder is enough.
[[nodiscard]] int openFolderForLookup(int parent, const char* name);

/// Whether an access control list gives others than its owner a right to add, remove or replace entries of an
/// open folder, or to give themselves that right, beyond what its mode bits show. A list that cannot be read
/// does.
[[nodiscard]] bool listLetsOthersChange(int folder);

/// When an item's contents or attributes were last changed; the member has another name on each system.
[[nodiscard]] timespec changeTime(const struct stat& status);

}  // namespace Platform::Posix
