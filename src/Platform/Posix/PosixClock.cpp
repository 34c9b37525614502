#include "Platform/Posix/PosixClock.h"

#include <cerrno>
#include <ctime>

namespace Platform::Posix {

std::uint64_t PosixClock::now() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000U +
           static_cast<std::uint64_t>(time.tv_nsec);
}

void PosixClock::sleep(std::uint32_t seconds) {
    timespec remaining{static_cast<time_t>(seconds), 0};
    while (::nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {
    }
}

}  // namespace Platform::Posix
