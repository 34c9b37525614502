#include "Platform/Posix/TamePropertyList.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Posix/Descriptor.h"
#include "Platform/Posix/PropertyListGuard.h"

namespace Platform::Posix {

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20;

/// At most `limit` bytes; nothing if reading fails.
std::optional<std::string> readUpTo(std::size_t limit, int file) {
    std::string bytes(limit, '\0');
    std::size_t length = 0;
    while (length < limit) {
        const ssize_t count = ::read(file, bytes.data() + length, limit - length);
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        length += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes.resize(length);
    return bytes;
}

}  // namespace

std::optional<std::string> readTamePropertyList(int folder, const std::string& path) {
    const Descriptor file(::openat(folder, path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0 ||
        static_cast<std::size_t>(status.st_size) > kLargestFile) {
        return std::nullopt;
    }
    auto bytes = readUpTo(static_cast<std::size_t>(status.st_size), file.get());
    return bytes && isTamePropertyList(*bytes) ? std::move(bytes) : std::nullopt;
}

}  // namespace Platform::Posix
