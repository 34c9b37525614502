// Stands for every application, agent and daemon of the product in a simulated Mac: runs under whatever name
// it was copied to and idles until somebody ends it. As a job with mach services it serves nobody: it accepts
// every caller, hangs up, and leaves when nobody has called for a second. Uses the C library only, so that a
// copy stays small.

#include <csignal>
#include <cstdlib>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int kFirstService = 3;
constexpr int kMaximumServices = 16;
constexpr int kIdleMilliseconds = 1000;

int countServices(const char* names) {
    int count = 1;
    for (; *names != '\0'; ++names) {
        count += *names == ':' ? 1 : 0;
    }
    return count < kMaximumServices ? count : kMaximumServices;
}

void serveUntilIdle(int count) {
    pollfd services[kMaximumServices];
    for (int index = 0; index < count; ++index) {
        services[index] = {kFirstService + index, POLLIN, 0};
    }
    while (::poll(services, static_cast<nfds_t>(count), kIdleMilliseconds) > 0) {
        for (int index = 0; index < count; ++index) {
            if (services[index].revents != 0) {
                const int caller = ::accept(services[index].fd, nullptr, nullptr);
                if (caller < 0) {
                    return;
                }
                ::close(caller);
            }
        }
    }
}

}  // namespace

int main() {
    std::signal(SIGTERM, [](int) { ::_exit(0); });
    const char* names = std::getenv("MACH_SERVICE_NAMES");
    if (names != nullptr && *names != '\0') {
        serveUntilIdle(countServices(names));
        return 0;
    }
    for (;;) {
        ::pause();
    }
}
