#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// From macOS 10.12. 0, or -1 with errno.
int fclonefileat(int from, int to, const char* name, uint32_t flags);

#ifdef __cplusplus
}
#endif
