#include "Platform/Linux/Processes/LinuxProcessTable.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/sysinfo.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstring>
#include <string>
#include <string_view>

#include "Base/UTF8.h"
#include "Platform/Linux/Processes/ProcessFiles.h"
#include "Platform/Posix/Descriptor.h"
#include "Platform/Posix/FolderListing.h"

namespace Platform::Linux {

namespace {

/// TASK_COMM_LEN less the terminator.
constexpr std::size_t kLongestKernelName = 15;
constexpr std::size_t kStatusLimit = 8192;
constexpr std::size_t kArgumentsLimit = std::size_t{1} << 17;
/// Room for processes that start between counting and listing.
constexpr long kSlack = 20;

std::int32_t parsePid(std::string_view name) {
    std::int32_t pid = 0;
    const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), pid);
    return failure == std::errc() && end == name.data() + name.size() && pid > 0 ? pid : 0;
}

int copyTo(std::span<char> destination, std::string_view text) {
    const std::size_t count = std::min({destination.size(), text.size(), std::size_t{INT_MAX}});
    std::copy_n(text.data(), count, destination.data());
    return static_cast<int>(count);
}

/// The file name among a script's arguments that begins with `start`; empty if there is none.
std::string argumentBeginningWith(std::int32_t pid, const std::string& start) {
    const std::string arguments = readProcessFile(pid, "cmdline", kArgumentsLimit).value_or(std::string());
    std::size_t position = 0;
    while (position < arguments.size()) {
        const std::size_t end = std::min(arguments.find('\0', position), arguments.size());
        std::string name = fileNameOf(arguments.substr(position, end - position));
        if (name.starts_with(start)) {
            return name;
        }
        position = end + 1;
    }
    return {};
}

std::string wholeName(std::int32_t pid) {
    std::string name = readProcessFile(pid, "comm", PIPE_BUF).value_or(std::string());
    if (name.ends_with('\n')) {
        name.pop_back();
    }
    if (name.size() < kLongestKernelName) {
        return name;
    }
    std::string candidate = fileNameOf(executablePath(pid));
    if (!candidate.starts_with(name)) {
        candidate = argumentBeginningWith(pid, name);
    }
    return candidate.empty() ? std::string(Base::withoutCutCharacter(name)) : candidate;
}

}  // namespace

int LinuxProcessTable::listPids(PidListType type, std::uint32_t user, std::span<std::int32_t> pids) {
    if (pids.empty()) {
        struct sysinfo facts {};
        // Counts threads, so there are never more processes.
        return ::sysinfo(&facts) == 0 ? static_cast<int>(facts.procs + kSlack) : -1;
    }
    const Posix::Descriptor folder(::open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        return -1;
    }
    Posix::FolderListing listing;
    listing.start(folder.get());
    Posix::FolderEntry entry;
    std::size_t count = 0;
    while (count < pids.size()) {
        const int result = listing.next(entry);
        if (result < 0) {
            return -1;
        }
        if (result == 0) {
            break;
        }
        const std::int32_t pid = parsePid(entry.name);
        std::uint32_t owner = 0;
        const bool wanted =
            pid > 0 && (type == PidListType::all || (effectiveUser(pid, owner) > 0 && owner == user));
        if (wanted) {
            pids[count++] = pid;
        }
    }
    return static_cast<int>(count);
}

int LinuxProcessTable::effectiveUser(std::int32_t pid, std::uint32_t& user) {
    // The line is "Uid:", then real, effective, saved and file system user id, each after a tab. A line break
    // in the process's name, further up, is escaped.
    constexpr std::string_view kLine = "\nUid:\t";
    const std::optional<std::string> status = readProcessFile(pid, "status", kStatusLimit);
    const std::size_t line = status ? status->find(kLine) : std::string::npos;
    const std::size_t effective = line == std::string::npos ? line : status->find('\t', line + kLine.size());
    if (effective == std::string::npos) {
        return 0;
    }
    const char* const end = status->data() + status->size();
    return std::from_chars(status->data() + effective + 1, end, user).ec == std::errc() ? 1 : 0;
}

int LinuxProcessTable::name(std::int32_t pid, std::span<char> name) {
    return copyTo(name, wholeName(pid));
}

int LinuxProcessTable::path(std::int32_t pid, std::span<char> path) {
    return copyTo(path, executablePath(pid));
}

int LinuxProcessTable::kill(std::int32_t pid, int signal) {
    return ::kill(pid, signal);
}

}  // namespace Platform::Linux
