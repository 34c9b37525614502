#pragma once

#include <string>

namespace Platform::Linux {

/// Copies the extended attributes, access control lists included, from one open item to another. Attributes
/// that this process may not set or that the destination's file system does not know are passed over. Returns
/// 0 or errno.
[[nodiscard]] int copyExtendedAttributes(int source, int copy);

/// The same for entries that cannot be opened (links, FIFOs), as themselves.
[[nodiscard]] int copyExtendedAttributes(int from, const char* name, int to, const char* newName);

}  // namespace Platform::Linux
