#pragma once

#include <stdint.h>
#include <sys/proc_info.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Bytes written to the buffer, or that one for every process needs when it is null; -1 or 0 with errno.
int proc_listpids(uint32_t type, uint32_t typeinfo, void* buffer, int buffersize);
int proc_pidinfo(int pid, int flavor, uint64_t arg, void* buffer, int buffersize);
int proc_name(int pid, void* buffer, uint32_t buffersize);
int proc_pidpath(int pid, void* buffer, uint32_t buffersize);

#ifdef __cplusplus
}
#endif
