#pragma once

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char uuid_t[16];

/// 0, or an error number.
int mbr_uid_to_uuid(uid_t user, uuid_t identifier);

#ifdef __cplusplus
}
#endif
