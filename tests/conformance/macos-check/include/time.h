#pragma once

#include_next <time.h>

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define CLOCK_UPTIME_RAW ((clockid_t)8)
/// From macOS 10.12. 0 with errno on failure.
uint64_t clock_gettime_nsec_np(clockid_t clock);

#ifdef __cplusplus
}
#endif
