#include "launchd/Caller.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <unistd.h>

#include "Base/WholeNumber.h"
#include "Support/Files.h"

namespace Simulator {

namespace {

std::string procPath(pid_t pid, const char* file) {
    return "/proc/" + std::to_string(pid) + "/" + file;
}

}  // namespace

std::optional<std::uint64_t> startOfProcess(pid_t pid) {
    const auto line = readFile(procPath(pid, "stat"));
    // The name in parentheses may hold anything; the 20th field after it is the start.
    const std::size_t end = line ? line->rfind(')') : std::string::npos;
    if (end == std::string::npos) {
        return std::nullopt;
    }
    std::istringstream fields(line->substr(end + 1));
    std::string field;
    for (int index = 0; index < 20; ++index) {
        fields >> field;
    }
    return std::strtoull(field.c_str(), nullptr, 10);
}

std::optional<std::string> executableOfProcess(pid_t pid) {
    std::array<char, 4096> path{};
    const ssize_t length = ::readlink(procPath(pid, "exe").c_str(), path.data(), path.size());
    if (length <= 0) {
        return std::nullopt;
    }
    std::string text(path.data(), static_cast<std::size_t>(length));
    constexpr std::string_view kDeleted = " (deleted)";
    if (text.ends_with(kDeleted)) {
        text.resize(text.size() - kDeleted.size());
    }
    return text;
}

std::optional<ProcessUsers> usersOfProcess(pid_t pid) {
    const auto status = readFile(procPath(pid, "status"));
    const std::size_t line = status ? status->find("\nUid:") : std::string::npos;
    if (line == std::string::npos) {
        return std::nullopt;
    }
    std::istringstream fields(status->substr(line + 5));
    ProcessUsers users;
    return fields >> users.real >> users.effective ? std::optional(users) : std::nullopt;
}

std::optional<std::uint32_t> userOfProcess(pid_t pid) {
    const auto users = usersOfProcess(pid);
    return users ? std::optional(users->effective) : std::nullopt;
}

std::vector<pid_t> allProcesses() {
    std::vector<pid_t> pids;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        if (const auto pid = Base::wholeNumber<pid_t>(entry->path().filename().string())) {
            pids.push_back(*pid);
        }
    }
    std::sort(pids.begin(), pids.end());
    return pids;
}

}  // namespace Simulator
