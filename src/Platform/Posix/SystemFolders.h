#pragma once

#include <sys/stat.h>

namespace Platform::Posix {

/// Whether an item, given by its own status, is one of the folders that belong to the system or to its users
/// and not to any product: /Applications, /Library and the folders of it that products share, /System,
/// /Users, the folders of Unix, every home in the password database, each folder that one of these lies in,
/// and each link that stands for one of these (/tmp on a Mac). By identity (device and inode), however it is
/// spelled.
///
/// Looks everything up at the moment of the call and keeps nothing: to be asked once for an operation, about
/// the item that it is told to change, not about what lies below. A system folder lies below another folder
/// only if that one is a system folder too; what root mounts elsewhere is no concern of this. Walks the
/// password database (getpwent(3)), whose position is the process's.
[[nodiscard]] bool isSystemFolder(const struct stat& item);

/// What messages say of such an item.
constexpr const char* kSystemFolderReason = "it is a folder of the system";

}  // namespace Platform::Posix
