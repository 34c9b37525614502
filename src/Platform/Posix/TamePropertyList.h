#pragma once

#include <optional>
#include <string>

namespace Platform::Posix {

/// The bytes of the property list at `path`, relative to the open folder `folder` (or AT_FDCWD), XML or
/// binary, if they can be handed to a parser that follows nesting recursively: a regular file of at most 1
/// MiB that neither nests too deeply nor would grow too large (see PropertyListGuard.h); otherwise nothing.
/// Links are followed, a FIFO is not waited for. It is up to the parser whether the bytes are a property list
/// at all.
[[nodiscard]] std::optional<std::string> readTamePropertyList(int folder, const std::string& path);

}  // namespace Platform::Posix
