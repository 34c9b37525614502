#pragma once

#include_next <sys/xattr.h>

#ifdef __cplusplus
#include <cstdint>

// A Mac's take two arguments more: a position, 0 but for resource forks, and options.
ssize_t getxattr(const char* path, const char* name, void* value, size_t size, std::uint32_t position,
                 int options);
int setxattr(const char* path, const char* name, const void* value, size_t size, std::uint32_t position,
             int options);
#endif
