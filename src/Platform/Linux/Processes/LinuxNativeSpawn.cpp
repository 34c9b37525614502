#include <fcntl.h>
#include <unistd.h>

#include "Platform/Posix/NativeSpawn.h"

namespace Platform::Posix {

int makePrivatePipe(int ends[2]) {
    return ::pipe2(ends, O_CLOEXEC);
}

int closeOtherDescriptors(posix_spawn_file_actions_t& actions, short& /*flags*/) {
    return ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
}

}  // namespace Platform::Posix
