#pragma once

#include <sys/stat.h>

namespace Platform::Posix {

/// Whether an item, given by its own status, is one of the folders that belong to the system or to its users
/// and not to any product: /Applications, /Library and the folders of it that products share, /System,
/// /Users, the folders of Unix, every home in the password database, each folder that contains one of these,
/// and each link that stands for one of these (/tmp on a Mac). By identity (device and inode), however it is
/// spelled.
///
/// Looks everything up at the moment of the call and keeps nothing: call it once per operation, for the item
/// to be changed, not for what lies below. A system folder lies below another folder only if that one is a
/// system folder too; file systems that root mounts elsewhere do not matter here. Walks the password database
/// (getpwent(3)), whose position belongs to the process.
[[nodiscard]] bool isSystemFolder(const struct stat& item);

/// The reason that messages give for such an item.
constexpr const char* kSystemFolderReason = "it is a folder of the system";

}  // namespace Platform::Posix
