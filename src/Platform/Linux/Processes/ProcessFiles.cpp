#include "Platform/Linux/Processes/ProcessFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string_view>

#include "Platform/Posix/Descriptor.h"

namespace Platform::Linux {

namespace {

constexpr std::string_view kDeleted = " (deleted)";

std::string processPath(std::int32_t pid, const char* file) {
    return "/proc/" + std::to_string(pid) + "/" + file;
}

/// Whether `path` leads to the very file that the process runs.
bool leadsToExecutable(const std::string& path, const std::string& link) {
    struct stat named {};
    struct stat executable {};
    return ::lstat(path.c_str(), &named) == 0 && ::stat(link.c_str(), &executable) == 0 &&
           named.st_dev == executable.st_dev && named.st_ino == executable.st_ino;
}

}  // namespace

std::optional<std::string> readProcessFile(std::int32_t pid, const char* file, std::size_t limit) {
    const Posix::Descriptor opened(::open(processPath(pid, file).c_str(), O_RDONLY | O_CLOEXEC));
    if (!opened) {
        return std::nullopt;
    }
    std::string result;
    std::array<char, 4096> buffer;
    while (result.size() < limit) {
        const ssize_t count =
            ::read(opened.get(), buffer.data(), std::min(buffer.size(), limit - result.size()));
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        if (count > 0) {
            result.append(buffer.data(), static_cast<std::size_t>(count));
        }
    }
    return result;
}

std::string executablePath(std::int32_t pid) {
    const std::string link = processPath(pid, "exe");
    std::array<char, PATH_MAX> buffer;
    const ssize_t length = ::readlink(link.c_str(), buffer.data(), buffer.size());
    if (length <= 0) {
        return {};
    }
    std::string path(buffer.data(), static_cast<std::size_t>(length));
    if (path.ends_with(kDeleted) && !leadsToExecutable(path, link)) {
        path.resize(path.size() - kDeleted.size());
    }
    return path.starts_with('/') ? path : std::string();
}

std::string fileNameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace Platform::Linux
