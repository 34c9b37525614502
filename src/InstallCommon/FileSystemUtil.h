#pragma once

#include <cstdint>
#include <optional>

#include "Base/URL.h"

namespace InstallCommon {

/// File operations of the commands, in the helper process. None reports failure to its caller: a failure
/// is one log line and the caller goes on. All are synchronous. [P] stands for "[SNTM Installer] "
/// below.
struct FileSystemUtil {
    FileSystemUtil() = delete;

    /// Creates a folder as user id 0. With `withIntermediateDirectories` missing parents are created and an
    /// existing folder is not a failure. Failure: [P]"Error: " + description.
    static void createDirectory(const Base::URL& at, bool withIntermediateDirectories);

    /// Whether the folder holds nothing but hidden entries. A folder that cannot be listed
    /// counts as empty, intentionally: it logs [P]"Error: " + description and returns
    /// true.
    [[nodiscard]] static bool isEmpty(const Base::URL& directory);

    /// Removes an item, a folder with everything in it, a link as itself. Success: [P]"Removed at " + path;
    /// failure, also for an item that is not there: [P]"Error removing: " + description. Does and logs
    /// nothing if `at` is empty.
    static void remove(const std::optional<Base::URL>& at);

    /// Sets the mode bits of the item itself, never of a link's target. Failure: [P]"Chmod failed for path "
    /// + URL + " and set errno to " + errno (EBADF if it cannot be opened), without a full stop.
    static void setPermissions(std::uint16_t mode, const Base::URL& fileLocation);

    /// Sets owner and group of the item itself. Failure: [P]"Chown failed
    /// for path " + URL + " and set errno to " + errno + ".", with a full
    /// stop.
    static void setOwner(std::uint32_t owner, std::uint32_t group, const Base::URL& of);

    /// The same for the item and, if it is a folder, everything below it, hidden items included, links as
    /// themselves.
    static void setOwnerRecursively(std::uint32_t owner, std::uint32_t group, const Base::URL& of);

    /// Copies an item to a place that must be free, creating missing parents as user id 0, and then, even if
    /// that failed, gives the destination to 0:0 throughout. Logs [P]"Copy source " + path + "; destination:
    /// " + path first; failure: [P]"Error: " + description.
    static void copy(const Base::URL& source, const Base::URL& destination);
};

}  // namespace InstallCommon
