#include "Platform/Posix/FileCopy.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

namespace Platform::Posix {

int FileCopy::copyTarget(int from, const char* name, int to, const char* newName) {
    std::array<char, PATH_MAX + 1> target;
    const ssize_t length = ::readlinkat(from, name, target.data(), target.size() - 1);
    if (length < 0) {
        return errno;
    }
    target[static_cast<std::size_t>(length)] = '\0';
    return ::symlinkat(target.data(), to, newName) == 0 ? 0 : errno;
}

}  // namespace Platform::Posix
