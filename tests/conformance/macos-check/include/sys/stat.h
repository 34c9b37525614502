#pragma once

#include_next <sys/stat.h>

#define st_atimespec st_atim
#define st_ctimespec st_ctim
#define st_mtimespec st_mtim

#define UF_IMMUTABLE 0x00000002
#define UF_HIDDEN 0x00008000

#ifdef __cplusplus
extern "C" {
#endif

int chflags(const char* path, unsigned flags);

#ifdef __cplusplus
}
#endif
