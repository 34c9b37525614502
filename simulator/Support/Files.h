#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace Simulator {

/// A file descriptor with an owner.
class Descriptor {
  public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor() { reset(); }

    [[nodiscard]] int get() const { return fd_; }
    [[nodiscard]] bool valid() const { return fd_ >= 0; }
    int release();
    void reset();

  private:
    int fd_;
};

/// Everything up to the end of `fd`; nothing on a read error or beyond `limit` bytes.
[[nodiscard]] std::optional<std::string> readAll(int fd, std::size_t limit);

/// A regular file's contents; links are followed. Returns nothing if it is absent, not a regular file (a FIFO
/// or device never blocks the caller), unreadable or larger than `limit`.
[[nodiscard]] std::optional<std::string> readFile(const std::string& path, std::size_t limit = 4U << 20U);

/// Writes all of `bytes`, even if interrupted.
[[nodiscard]] bool writeAll(int fd, std::string_view bytes);

/// Puts a file with these bytes and this mode at `path`, as a whole or not at all: an older file or link with
/// that name is replaced, never written through.
[[nodiscard]] bool replaceFile(const std::string& path, std::string_view bytes, mode_t mode);

}  // namespace Simulator
