#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _copyfile_state* copyfile_state_t;
typedef uint32_t copyfile_flags_t;

#define COPYFILE_ACL (1 << 0)
#define COPYFILE_XATTR (1 << 2)
#define COPYFILE_DATA (1 << 3)
/// From macOS 10.5. Negative with errno on failure.
int fcopyfile(int from, int to, copyfile_state_t state, copyfile_flags_t flags);

#ifdef __cplusplus
}
#endif
