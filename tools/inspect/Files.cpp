#include "Files.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

namespace Inspect {

namespace {

std::string systemError(int code) {
    return std::generic_category().message(code);
}

/// Closes a descriptor if it has opened it itself.
class OpenFile {
  public:
    OpenFile(int fd, bool owned) : fd_(fd), owned_(owned && fd >= 0) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { static_cast<void>(close()); }

    [[nodiscard]] int get() const { return fd_; }
    [[nodiscard]] bool close() { return !std::exchange(owned_, false) || ::close(fd_) == 0; }

  private:
    int fd_;
    bool owned_;
};

/// Holds back the signals with which a user ends a program.
class DeferredSignals {
  public:
    DeferredSignals() {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT, SIGTSTP, SIGPIPE}) {
            sigaddset(&ending, signal);
        }
        ::sigprocmask(SIG_BLOCK, &ending, &previous_);
    }
    DeferredSignals(const DeferredSignals&) = delete;
    DeferredSignals& operator=(const DeferredSignals&) = delete;
    ~DeferredSignals() { ::sigprocmask(SIG_SETMASK, &previous_, nullptr); }

  private:
    sigset_t previous_{};
};

bool writeAll(int fd, const void* bytes, std::size_t size) {
    const auto* next = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t written = ::write(fd, next, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            return false;
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

/// The mode of the file at `file`: an older file's, otherwise the usual one. Returns nothing if an item there
/// must not be replaced.
std::optional<mode_t> modeFor(const std::string& file, std::string& refusal) {
    struct stat older {};
    if (::lstat(file.c_str(), &older) == 0) {
        if (!S_ISREG(older.st_mode)) {
            refusal = S_ISDIR(older.st_mode) ? "is a folder" : "exists and is not a regular file";
            return std::nullopt;
        }
        return older.st_mode & 0777;
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

bool fill(int fd, std::span<const std::uint8_t> bytes, mode_t mode) {
    return writeAll(fd, bytes.data(), bytes.size()) && ::fchmod(fd, mode) == 0 && ::fsync(fd) == 0;
}

std::optional<std::size_t> columnCount(const char* text) {
    constexpr std::size_t kFewest = 20;
    constexpr std::size_t kMost = 1000;
    std::size_t columns = 0;
    const char* const end = text + std::strlen(text);
    const auto parsed = std::from_chars(text, end, columns);
    const bool usable =
        parsed.ec == std::errc() && parsed.ptr == end && columns >= kFewest && columns <= kMost;
    return usable ? std::optional(columns) : std::nullopt;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> readFile(const std::string& file, std::size_t limit,
                                                  std::string& refusal) {
    const bool isInput = file == "-";
    OpenFile input(isInput ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY), !isInput);
    if (input.get() < 0) {
        refusal = systemError(errno);
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint8_t> chunk(std::size_t{64} << 10);
    for (;;) {
        const ssize_t count = ::read(input.get(), chunk.data(), chunk.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            refusal = errno == EISDIR ? "is a folder" : systemError(errno);
            return std::nullopt;
        }
        if (count == 0) {
            return bytes;
        }
        if (bytes.size() + static_cast<std::size_t>(count) > limit) {
            refusal = "holds more than " + std::to_string(limit) + " bytes";
            return std::nullopt;
        }
        bytes.insert(bytes.end(), chunk.begin(), chunk.begin() + count);
    }
}

bool writeStandardOutput(std::string_view bytes, std::string& refusal) {
    if (!writeAll(STDOUT_FILENO, bytes.data(), bytes.size())) {
        refusal = systemError(errno);
        return false;
    }
    return true;
}

bool replaceFile(const std::string& file, std::span<const std::uint8_t> bytes, std::string& refusal) {
    if (file.empty() || file.back() == '/') {
        refusal = "names no file";
        return false;
    }
    const std::optional<mode_t> mode = modeFor(file, refusal);
    if (!mode) {
        return false;
    }
    const DeferredSignals deferred;
    const std::size_t slash = file.rfind('/');
    std::string temporary =
        file.substr(0, slash == std::string::npos ? 0 : slash + 1) + ".sentrel-inspect-XXXXXX";
    OpenFile output(::mkstemp(temporary.data()), true);
    if (output.get() < 0) {
        refusal = systemError(errno);
        return false;
    }
    if (!fill(output.get(), bytes, *mode) || !output.close() ||
        std::rename(temporary.c_str(), file.c_str()) != 0) {
        refusal = systemError(errno);
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

std::size_t outputWidth() {
    constexpr std::size_t kUsual = 120;
    const char* const told = std::getenv("COLUMNS");
    if (const auto columns = told != nullptr ? columnCount(told) : std::nullopt) {
        return *columns;
    }
    struct winsize window {};
    const bool isTerminal = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 0;
    return isTerminal ? window.ws_col : kUsual;
}

}  // namespace Inspect
