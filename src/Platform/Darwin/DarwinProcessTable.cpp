#include "Platform/Darwin/DarwinProcessTable.h"

#include <libproc.h>
#include <signal.h>
#include <sys/proc_info.h>

#include <algorithm>
#include <array>
#include <climits>
#include <string_view>

#include "Base/UTF8.h"

namespace Platform::Darwin {

namespace {

constexpr int kPidSize = sizeof(std::int32_t);
/// What the calls below take at most; with less than a name or a path may need they give nothing at all.
using Buffer = std::array<char, PROC_PIDPATHINFO_MAXSIZE>;

std::uint32_t nativeType(PidListType type) {
    switch (type) {
        case PidListType::all:
            return PROC_ALL_PIDS;
        case PidListType::effectiveUser:
            return PROC_UID_ONLY;
    }
    return PROC_ALL_PIDS;
}

int copyTo(std::span<char> destination, std::string_view text) {
    const std::size_t count = std::min(destination.size(), text.size());
    std::copy_n(text.data(), count, destination.data());
    return static_cast<int>(count);
}

/// What a call wrote to a buffer that was zeroed before.
std::string_view textIn(const Buffer& buffer, int length) {
    const std::string_view text(buffer.data(), buffer.size());
    return length > 0 ? text.substr(0, text.find('\0')) : std::string_view();
}

}  // namespace

int DarwinProcessTable::listPids(PidListType type, std::uint32_t user, std::span<std::int32_t> pids) {
    const std::size_t most = INT_MAX / kPidSize;
    const int size = static_cast<int>(std::min(pids.size(), most)) * kPidSize;
    // The system counts in bytes, so either answer is four times as many as there are ids. It goes on as it
    // is: who takes it for a number of ids makes a buffer with room for processes that start meanwhile.
    return ::proc_listpids(nativeType(type), user, pids.empty() ? nullptr : pids.data(), size);
}

int DarwinProcessTable::effectiveUser(std::int32_t pid, std::uint32_t& user) {
    proc_bsdshortinfo info{};
    const int result = ::proc_pidinfo(pid, PROC_PIDT_SHORTBSDINFO, 0, &info, PROC_PIDT_SHORTBSDINFO_SIZE);
    if (result > 0) {
        user = info.pbsi_uid;
    }
    return result;
}

int DarwinProcessTable::name(std::int32_t pid, std::span<char> name) {
    Buffer buffer{};
    const int length = ::proc_name(pid, buffer.data(), static_cast<std::uint32_t>(buffer.size()));
    return copyTo(name, Base::withoutCutCharacter(textIn(buffer, length)));
}

int DarwinProcessTable::path(std::int32_t pid, std::span<char> path) {
    Buffer buffer{};
    const int length = ::proc_pidpath(pid, buffer.data(), static_cast<std::uint32_t>(buffer.size()));
    return copyTo(path, textIn(buffer, length));
}

int DarwinProcessTable::kill(std::int32_t pid, int signal) {
    return ::kill(pid, signal);
}

}  // namespace Platform::Darwin
