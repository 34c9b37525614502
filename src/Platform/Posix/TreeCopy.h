#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Error.h"

namespace Platform::Posix {

/// An entry of an open folder, and its name in messages.
struct CopyPlace {
    int parent;
    const std::string& name;
    const std::string& path;
};

/// Copies an entry, a folder with everything in it. The promises are those of FileManager::copyItem; beyond
/// them:
///
/// - A folder is not copied into itself (EINVAL, before anything is made).
/// - Hard links inside the tree become separate files. Holes stay holes.
/// - FIFOs, sockets (as names that nobody listens on) and, where permitted, devices are recreated on Linux,
///   and give ENOTSUP on macOS.
/// - If the owner or the group cannot be kept, for lack of permission, the copy belongs to this process and
///   has no set-id bits. Extended attributes that this process may not set, or the destination's file system
///   does not know, are not copied.
/// - A folder that is being filled has mode 0700, and keeps it if the copy stops inside it.
[[nodiscard]] std::optional<Error> copyTree(const CopyPlace& source, const CopyPlace& destination);

/// The error of a copy.
[[nodiscard]] Error copyError(std::string_view source, std::string_view destination, int code);

}  // namespace Platform::Posix
