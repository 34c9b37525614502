#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

namespace PlatformTests {

inline bool sameTime(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

inline void setTimes(const std::string& path, time_t seconds) {
    const timespec times[2] = {{seconds, 123456789}, {seconds + 1, 987654321}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

}  // namespace PlatformTests
