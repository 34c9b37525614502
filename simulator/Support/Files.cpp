#include "Support/Files.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Simulator {

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        reset();
        fd_ = other.release();
    }
    return *this;
}

int Descriptor::release() {
    return std::exchange(fd_, -1);
}

void Descriptor::reset() {
    if (fd_ >= 0) {
        ::close(release());
    }
}

std::optional<std::string> readAll(int fd, std::size_t limit) {
    std::string bytes;
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t count = ::read(fd, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0 || bytes.size() + static_cast<std::size_t>(count) > limit) {
            return std::nullopt;
        }
        if (count == 0) {
            return bytes;
        }
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

std::optional<std::string> readFile(const std::string& path, std::size_t limit) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file.valid() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return readAll(file.get(), limit);
}

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(fd, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    return true;
}

bool replaceFile(const std::string& path, std::string_view bytes, mode_t mode) {
    std::string temporary = path + ".XXXXXX";
    const Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.valid()) {
        return false;
    }
    if (!writeAll(file.get(), bytes) || ::fchmod(file.get(), mode) != 0 ||
        ::rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        ::unlink(temporary.c_str());
        errno = error;
        return false;
    }
    return true;
}

}  // namespace Simulator
