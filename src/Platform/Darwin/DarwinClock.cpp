#include "Platform/Darwin/DarwinClock.h"

#include <time.h>

#include "Platform/Posix/PosixClock.h"

namespace Platform::Darwin {

std::uint64_t DarwinClock::now() {
    return ::clock_gettime_nsec_np(CLOCK_UPTIME_RAW);
}

void DarwinClock::sleep(std::uint32_t seconds) {
    Posix::PosixClock().sleep(seconds);
}

}  // namespace Platform::Darwin
