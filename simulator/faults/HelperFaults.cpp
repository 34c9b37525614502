// Preloaded into the installer helper when a fault of its reports or its pauses was requested: counts or
// drops the helper's progress reports, each of which is one send() whose bytes name the report's message, and
// changes the length of its pauses, each of which is one nanosleep(). The helper does not notice.

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <dlfcn.h>
#include <signal.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr std::string_view kReport = "commandExecutingDidExecuteCommand:withWeight:";

constexpr double kNanoseconds = 1e9;

using Sleep = int (*)(const timespec*, timespec*);

Sleep realSleep() {
    static const Sleep sleep = reinterpret_cast<Sleep>(::dlsym(RTLD_NEXT, "nanosleep"));
    return sleep;
}

using Send = ssize_t (*)(int, const void*, size_t, int);

Send realSend() {
    static const Send send = reinterpret_cast<Send>(::dlsym(RTLD_NEXT, "send"));
    return send;
}

}  // namespace

extern "C" ssize_t send(int socket, const void* bytes, size_t length, int flags) {
    static long reports = 0;
    if (::memmem(bytes, length, kReport.data(), kReport.size()) == nullptr) {
        return realSend()(socket, bytes, length, flags);
    }
    if (std::getenv("MACSIM_HELPER_MUTE") != nullptr) {
        return static_cast<ssize_t>(length);
    }
    const ssize_t sent = realSend()(socket, bytes, length, flags);
    const char* last = std::getenv("MACSIM_HELPER_EXIT_AFTER");
    if (last != nullptr && ++reports >= std::strtol(last, nullptr, 10)) {
        ::kill(::getpid(), SIGKILL);
    }
    return sent;
}

extern "C" int nanosleep(const timespec* wanted, timespec* remaining) {
    const char* pause = std::getenv("MACSIM_HELPER_PAUSE");
    if (pause == nullptr) {
        return realSleep()(wanted, remaining);
    }
    const double seconds = std::strtod(pause, nullptr);
    const double whole = std::floor(seconds);
    timespec rest{static_cast<time_t>(whole), static_cast<long>((seconds - whole) * kNanoseconds)};
    while (realSleep()(&rest, &rest) != 0 && errno == EINTR) {
    }
    return 0;
}
