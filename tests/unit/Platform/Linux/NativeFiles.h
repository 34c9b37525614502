#pragma once

#include <sys/stat.h>
#include <sys/xattr.h>

#include <string>

/// What the tests of the file operations need of the system that they run on; the folder darwin has the same.
namespace PlatformTests {

inline const timespec& accessTime(const struct stat& status) {
    return status.st_atim;
}
inline const timespec& modificationTime(const struct stat& status) {
    return status.st_mtim;
}

/// setxattr(2) and getxattr(2).
inline int setAttribute(const std::string& path, const char* name, const void* value, std::size_t size) {
    return ::setxattr(path.c_str(), name, value, size, 0);
}
inline ssize_t attribute(const std::string& path, const char* name, void* value, std::size_t size) {
    return ::getxattr(path.c_str(), name, value, size);
}

}  // namespace PlatformTests
