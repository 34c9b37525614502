#include "Platform/Posix/PosixTermination.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <thread>
#include <utility>

#include "Base/FatalError.h"
#include "Platform/Posix/NativeSpawn.h"

namespace Platform::Posix {

namespace {

/// Written to by the signal handler, which can reach nothing but globals.
int requestPipe = -1;

void noteRequest(int /*signal*/) {
    const int error = errno;
    const char request = 1;
    static_cast<void>(!::write(requestPipe, &request, 1));
    errno = error;
}

}  // namespace

void PosixTermination::onRequest(std::function<void()> requested) {
    int ends[2] = {-1, -1};
    if (requestPipe != -1 || makePrivatePipe(ends) != 0) {
        Base::fatalError("SIGTERM can be listened for once per process, and takes a pipe.");
    }
    // A handler must not wait: a pipe full of unanswered requests is enough.
    ::fcntl(ends[1], F_SETFL, O_NONBLOCK);
    requestPipe = ends[1];
    std::thread([readEnd = ends[0], requested = std::move(requested)] {
        char request = 0;
        for (;;) {
            if (::read(readEnd, &request, 1) == 1) {
                requested();
            }
        }
    }).detach();
    struct sigaction action {};
    action.sa_handler = noteRequest;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGTERM, &action, nullptr);
}

}  // namespace Platform::Posix
