#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "Base/URL.h"
#include "Platform/Error.h"

namespace Platform {

/// Tells an item from another one that has taken its place: equal only for the same item, unchanged in
/// between.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    /// The time of the last change to the item or its attributes.
    std::int64_t changeSeconds = 0;
    std::int64_t changeNanoseconds = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// File operations, one system service each; the effective user id of the moment decides what is permitted.
///
/// Error descriptions name the item's path. Nothing is logged. All calls are synchronous and may come from
/// any thread. Removal, change of ownership and copying of a large tree start a few threads of their own, all
/// of which have ended when the call returns. "Link" means symbolic link; unless stated otherwise the last
/// component is never followed if it is a link.
///
/// The way to an item: removal, copying (both ends), creation of folders and the change of modes and owners
/// go down from the root folder component by component, and follow a link on the way only if nobody but root
/// can have put it there (/tmp, /var and /etc of a Mac): it belongs to root, in a folder that root alone can
/// change, reached through such folders and links only. Any other link gives ELOOP with a description that
/// names it. A path with a component "." or ".." gives EINVAL.
///
/// Folders of the system: whatever the caller asks, removal and the change of modes and owners refuse (EPERM)
/// the root folder, /Applications, /Library and its shared folders, /System, /Users, /Users/Shared, every
/// home in the password database, the folders of Unix, /Volumes, and every folder that contains one of these.
/// They are known by device and inode, not by spelling. Their contents are not protected.
class FileManager {
  public:
    virtual ~FileManager() = default;

    /// Creates a folder with mode 0777 less the umask. With `withIntermediates`, missing parents are created
    /// too and an existing folder is not an error; without it, a missing parent or an existing item is one.
    /// Returns the error.
    [[nodiscard]] virtual std::optional<Error> createDirectory(const Base::URL& directory,
                                                               bool withIntermediates) = 0;

    /// Whether the folder has entries other than hidden ones (names that begin with a dot). A link to a
    /// folder is followed. On failure (absent, not a folder, unreadable) returns nothing and sets `error`.
    [[nodiscard]] virtual std::optional<bool> hasVisibleEntries(const Base::URL& directory, Error& error) = 0;

    /// Removes an item, a folder with everything in it, a link as the link itself. Works relative to open
    /// folders and never steps through a link, even one that is swapped in while it runs; never leaves the
    /// item's tree or file system mount by way of a link. Constant memory and stack for any width and depth.
    /// Entries that cannot be removed are passed over, everything else goes; the first failure is returned: a
    /// folder's contents come before the folder, its entries in the order of their names' bytes. A folder
    /// that somebody keeps adding to is given up after three passes (ENOTEMPTY). An absent item is an error
    /// (ENOENT).
    [[nodiscard]] virtual std::optional<Error> removeItem(const Base::URL& item) = 0;

    /// Copies an item, a folder with everything in it. Keeps modes, times, extended attributes, owners where
    /// permitted, and links as links; shares blocks where the file system can. Never replaces: an existing
    /// destination (also a dangling link) is an error (EEXIST) and stays as it was. A folder is not copied
    /// into itself (EINVAL). Stops at the first failure, in the order in which folders are listed, and leaves
    /// what was copied so far; that may include items beyond the failure. The destination's parent must
    /// exist. A copy keeps set-id bits only together with the owner and group.
    [[nodiscard]] virtual std::optional<Error> copyItem(const Base::URL& source,
                                                        const Base::URL& destination) = 0;

    /// Whether an item exists; links are followed, so a dangling link does not.
    [[nodiscard]] virtual bool itemExists(const Base::URL& item) = 0;

    /// The identity of the item itself, a link's as the link's; nothing if it does not exist.
    [[nodiscard]] virtual std::optional<FileIdentity> identity(const Base::URL& item) = 0;

    /// Opens the item itself (a link as the link, open(2) O_SYMLINK) and sets its mode bits, sticky and
    /// set-id bits included (fchmod). Returns 0 or errno; EBADF if the item cannot be opened or, for whatever
    /// reason, the way to it cannot be walked. Never changes a link's target; where links have no mode of
    /// their own, a link gives EOPNOTSUPP.
    [[nodiscard]] virtual int setMode(const Base::URL& item, std::uint16_t mode) = 0;

    /// The same with owner and group (fchown). A link's own owner is changed, never its target's.
    ///
    /// - A file loses its set-id bits when its owner or group changes, so that nobody's program comes to run
    ///   as its new owner, and keeps them if both are the same already, on both systems.
    /// - A file with hard links elsewhere that belongs to somebody else is refused (EMLINK): it may be
    ///   anybody's, linked here by whoever may write to this folder.
    [[nodiscard]] virtual int setOwner(const Base::URL& item, std::uint32_t owner, std::uint32_t group) = 0;

    /// Sets owner and group of everything below a folder, hidden entries included, links as themselves, not
    /// of the folder itself; each item as setOwner does. Never steps through a link. `failed` is called on
    /// this thread with each item whose owner could not be set and its errno (EBADF for one that cannot be
    /// opened or has gone), and the walk goes on. Up to 255 failures are reported at the end, in the order
    /// that removeItem describes; if there are more, those that a second walk meets, as it meets them. Has no
    /// effect on an item that is not a folder, cannot be read or is a folder of the system; what lies in a
    /// folder below that cannot be read is passed over without a report. Constant memory and stack for any
    /// width and depth.
    virtual void setOwnerOfContents(const Base::URL& directory, std::uint32_t owner, std::uint32_t group,
                                    const std::function<void(const Base::URL& item, int error)>& failed) = 0;
};

}  // namespace Platform
