#pragma once

#include <sys/stat.h>

namespace Platform::Posix {

/// The part of `st_mode` that fchmod sets; the rest is the item's kind.
inline constexpr mode_t kModeBits = 07777;
/// A file with one of these runs with its owner's or its group's rights, whoever starts it.
inline constexpr mode_t kSetIdBits = S_ISUID | S_ISGID;

}  // namespace Platform::Posix
