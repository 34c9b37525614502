#include "Platform/Linux/Processes/StandardErrorLog.h"

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <string>

namespace Platform::Linux {

namespace {

constexpr long kNanosecondsPerMillisecond = 1'000'000;

std::string dateAndTime() {
    std::timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    std::tm local{};
    ::localtime_r(&now.tv_sec, &local);
    std::array<char, 32> seconds{};
    std::strftime(seconds.data(), seconds.size(), "%Y-%m-%d %H:%M:%S", &local);
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%s.%03ld ", seconds.data(),
                  now.tv_nsec / kNanosecondsPerMillisecond);
    return text.data();
}

/// While it lives, writing into a pipe without a reader fails on this thread without ending the process.
class NoBrokenPipeSignal {
  public:
    NoBrokenPipeSignal() {
        ::sigemptyset(&brokenPipe_);
        ::sigaddset(&brokenPipe_, SIGPIPE);
        ::sigpending(&pending_);
        ::pthread_sigmask(SIG_BLOCK, &brokenPipe_, &before_);
    }
    NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
    NoBrokenPipeSignal& operator=(const NoBrokenPipeSignal&) = delete;
    ~NoBrokenPipeSignal() {
        // A signal that was pending before belongs to somebody else.
        if (::sigismember(&pending_, SIGPIPE) == 0) {
            const std::timespec atOnce{};
            while (::sigtimedwait(&brokenPipe_, nullptr, &atOnce) < 0 && errno == EINTR) {
            }
        }
        ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }

  private:
    sigset_t brokenPipe_{};
    sigset_t pending_{};
    sigset_t before_{};
};

}  // namespace

bool isStandardErrorRead() {
    struct stat facts {};
    if (::fstat(STDERR_FILENO, &facts) != 0) {
        return false;
    }
    return S_ISREG(facts.st_mode) || S_ISFIFO(facts.st_mode) || S_ISSOCK(facts.st_mode) ||
           ::isatty(STDERR_FILENO) == 1;
}

void writeToStandardError(std::string_view program, std::string_view text) {
    std::string line = dateAndTime();
    line += program;
    line += '[' + std::to_string(::getpid()) + ':' + std::to_string(::gettid()) + "] ";
    line += text;
    line += '\n';
    const NoBrokenPipeSignal noSignal;
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t count = ::write(STDERR_FILENO, rest.data(), rest.size());
        if (count < 0 && errno != EINTR) {
            return;
        }
        rest.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
}

}  // namespace Platform::Linux
