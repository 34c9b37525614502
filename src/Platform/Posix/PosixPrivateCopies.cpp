#include "Platform/Posix/PosixPrivateCopies.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "Platform/Posix/FileError.h"
#include "Platform/Posix/SHA256.h"

namespace Platform::Posix {

namespace {

constexpr std::size_t kPart = std::size_t{1} << 16;
constexpr mode_t kReadOnly = 0400;

class Copy final : public PrivateCopy {
  public:
    Copy(PrivateFolder folder, std::uint64_t size, std::string sha256)
        : folder_(std::move(folder)), size_(size), sha256_(std::move(sha256)) {}

    [[nodiscard]] std::uint64_t size() const override { return size_; }
    [[nodiscard]] const std::string& sha256() const override { return sha256_; }

  private:
    PrivateFolder folder_;
    std::uint64_t size_;
    std::string sha256_;
};

/// Opens nothing but a regular file, for reading. O_NONBLOCK, because nobody may ever write to a FIFO.
std::optional<Error> openRegularFile(const std::string& path, Descriptor& file) {
    file = Descriptor(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file) {
        return fileError(path, "read", errno);
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) {
        return fileError(path, "read", errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return fileError(path, "read", S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    return std::nullopt;
}

/// Reads up to `count` bytes: the number read, 0 at the end of the file, -1 with errno.
ssize_t readSome(int file, char* bytes, std::size_t count) {
    ssize_t got = 0;
    do {
        got = ::read(file, bytes, count);
    } while (got < 0 && errno == EINTR);
    return got;
}

/// Returns 0 or errno.
int writeAll(int file, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(file, bytes, count);
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        const auto done = static_cast<std::size_t>(std::max<ssize_t>(written, 0));
        bytes += done;
        count -= done;
    }
    return 0;
}

/// The result of copying bytes.
struct Progress {
    std::uint64_t copied = 0;
    SHA256 digest;
};

/// Copies and hashes up to `atMost` bytes. Returns 0 or errno.
int copyBytes(int source, int target, std::uint64_t atMost, Progress& progress,
              const std::function<void(std::uint64_t)>& step) {
    std::vector<char> part(kPart);
    while (progress.copied < atMost) {
        if (step) {
            step(progress.copied);
        }
        const ssize_t got =
            readSome(source, part.data(), std::min<std::uint64_t>(kPart, atMost - progress.copied));
        if (got <= 0) {
            return got < 0 ? errno : 0;
        }
        const auto count = static_cast<std::size_t>(got);
        progress.digest.add(part.data(), count);
        if (const int failure = writeAll(target, part.data(), count); failure != 0) {
            return failure;
        }
        progress.copied += count;
    }
    return 0;
}

}  // namespace

std::unique_ptr<PrivateCopy> PosixPrivateCopies::copy(const Base::URL& file, const Base::URL& destination,
                                                      std::uint64_t atMost, Error& error) {
    Descriptor source;
    PrivateFolder folder;
    std::optional<Error> failure = openRegularFile(file.path(), source);
    if (!failure) {
        failure = folder.take(destination.deletingLastPathComponent(), ground_);
    }
    if (failure) {
        error = *failure;
        return nullptr;
    }
    const Descriptor target(::openat(folder.get(), destination.lastPathComponent().c_str(),
                                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kReadOnly));
    Progress progress;
    const int number = target ? copyBytes(source.get(), target.get(), atMost, progress, step_) : errno;
    if (number != 0) {
        error = fileError(file.path(), "copied to \"" + destination.path() + "\"", number);
        return nullptr;
    }
    return std::make_unique<Copy>(std::move(folder), progress.copied, progress.digest.finish());
}

std::optional<Error> PosixPrivateCopies::removeFolder(const Base::URL& folder) {
    PrivateFolder leftover;
    if (std::optional<Error> failure = leftover.takeLeftover(folder, ground_)) {
        return failure;
    }
    return leftover.remove();
}

}  // namespace Platform::Posix
