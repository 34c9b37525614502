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
/// fchown for such a descriptor or that of an open folder. Whether a file keeps its set-id bits is the
/// system's choice: giveItem() in TreeOwnership.h settles it.
[[nodiscard]] int setOwnerOfOpenItem(int item, uid_t owner, gid_t group);
/// Whether a file that root gives away keeps its set-id bits, or loses them even if it already had that
/// owner.
[[nodiscard]] bool changeOfOwnerKeepsSetIdBits();

/// Opens the folder `name` of the open folder `parent` as the starting point of descriptor-relative calls; a
/// link gives ENOTDIR or ELOOP. Where the system can, permission to search the folder is enough.
[[nodiscard]] int openFolderForLookup(int parent, const char* name);

/// Whether an access control list gives anybody but its owner a right to add, remove or replace entries of an
/// open folder, or to give themselves that right, beyond what its mode bits show. True if the list cannot be
/// read.
[[nodiscard]] bool listLetsOthersChange(int folder);

/// The last change of an item's contents or attributes; the member has another name on each system.
[[nodiscard]] timespec changeTime(const struct stat& status);

}  // namespace Platform::Posix
