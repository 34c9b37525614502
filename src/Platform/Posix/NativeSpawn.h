#pragma once

#include <spawn.h>

namespace Platform::Posix {

// The differences between the systems in starting a child process; each system has its own source file for
// it.

/// pipe(2) whose ends no child process inherits. Returns 0, or -1 with errno.
[[nodiscard]] int makePrivatePipe(int ends[2]);

/// Makes the child keep descriptors 0, 1 and 2 only. Called after the other file actions were added; the
/// caller then sets `flags` on `attributes`. Returns 0 or an errno value.
[[nodiscard]] int closeOtherDescriptors(posix_spawn_file_actions_t& actions, short& flags);

}  // namespace Platform::Posix
