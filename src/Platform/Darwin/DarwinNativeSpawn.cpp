#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Posix/NativeSpawn.h"

namespace Platform::Posix {

// There is no pipe2(2). Between the calls another thread may start a child. If it is one of ours, it still
// does not inherit the ends: it is started with POSIX_SPAWN_CLOEXEC_DEFAULT, whatever a descriptor's flags
// say. Only a child that a system library forks in that moment could.
int makePrivatePipe(int ends[2]) {
    if (::pipe(ends) != 0) {
        return -1;
    }
    if (::fcntl(ends[0], F_SETFD, FD_CLOEXEC) == 0 && ::fcntl(ends[1], F_SETFD, FD_CLOEXEC) == 0) {
        return 0;
    }
    const int failure = errno;
    ::close(ends[0]);
    ::close(ends[1]);
    errno = failure;
    return -1;
}

// With this flag a child keeps only what a file action names: its output and error pipes, and standard input
// by the action here. Inheriting a closed descriptor would make the start fail.
int closeOtherDescriptors(posix_spawn_file_actions_t& actions, short& flags) {
    flags = static_cast<short>(flags | POSIX_SPAWN_CLOEXEC_DEFAULT);
    if (::fcntl(STDIN_FILENO, F_GETFD) < 0) {
        return 0;
    }
    return ::posix_spawn_file_actions_addinherit_np(&actions, STDIN_FILENO);
}

}  // namespace Platform::Posix
