#pragma once

#include <string>

#include "Base/URL.h"
#include "Platform/Error.h"
#include "Platform/Posix/Descriptor.h"

namespace Platform::Posix {

/// An item as the folder that contains it, opened, and its name there; the root folder is its own parent and
/// is called ".". Not yet checked: whether there is such an entry, and of what kind.
struct OpenedParent {
    Descriptor folder;
    std::string name;
};

/// The outcome of a walk to an item.
struct WayEnd {
    /// 0, or an errno value: ELOOP for a link that may not be followed or is one too many; EINVAL for a path
    /// with a component "." or "..".
    int code = 0;
    /// The link that may not be followed; empty for every other failure.
    std::string refusedLink;
};

/// Whether root alone can add and remove entries of an open folder.
[[nodiscard]] bool onlyRootChanges(int folder);

/// Walks from the root folder to the folder that `item` lies in, component by component, each relative to the
/// open folder before it and as itself.
///
/// A link on the way is followed only when nobody but root can have put it there: the link belongs to root,
/// and the folder that holds it and every folder on the way to there belong to root and let nobody else add
/// or remove entries (no write permission for group or others, with or without the sticky bit; no access
/// control list that gives it). Its target is walked by the same rule, at most 32 links in all. This holds
/// for every user id that this process may have.
///
/// Permission to search the folders on the way is enough where the system can open them so.
[[nodiscard]] WayEnd openParent(const Base::URL& item, OpenedParent& parent);

/// The same; folders that the path names and that are missing are made, with mode 0777 less the umask.
/// Nothing is made at the end of a link that leads nowhere (ENOENT).
[[nodiscard]] WayEnd makeParent(const Base::URL& item, OpenedParent& parent);

/// The error of a walk that ended early, in the form of fileError().
[[nodiscard]] Error wayError(const Base::URL& item, std::string_view outcome, const WayEnd& end);

}  // namespace Platform::Posix
