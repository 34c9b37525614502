// libproc over this system's processes, with its ways: counts in bytes, nothing for a buffer of a size that
// it does not like, names of at most 32 bytes.
#include <libproc.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "Platform/Linux/Processes/LinuxProcessTable.h"

namespace {

using Platform::PidListType;
using Platform::Linux::LinuxProcessTable;

constexpr int kPidSize = sizeof(std::int32_t);
constexpr std::size_t kLongestName = 32;

}  // namespace

int proc_listpids(uint32_t type, uint32_t typeinfo, void* buffer, int buffersize) {
    if (type != PROC_ALL_PIDS && type != PROC_UID_ONLY) {
        errno = EINVAL;
        return 0;
    }
    const std::size_t room = buffer != nullptr ? static_cast<std::size_t>(buffersize / kPidSize) : 0;
    const int count = LinuxProcessTable().listPids(static_cast<PidListType>(type), typeinfo,
                                                   std::span(static_cast<std::int32_t*>(buffer), room));
    return count * kPidSize;
}

int proc_pidinfo(int pid, int flavor, uint64_t arg, void* buffer, int buffersize) {
    proc_bsdshortinfo info{};
    if (flavor != PROC_PIDT_SHORTBSDINFO || arg != 0 || buffersize < PROC_PIDT_SHORTBSDINFO_SIZE) {
        errno = EINVAL;
        return 0;
    }
    if (LinuxProcessTable().effectiveUser(pid, info.pbsi_uid) <= 0) {
        errno = ESRCH;
        return 0;
    }
    info.pbsi_pid = static_cast<uint32_t>(pid);
    std::memcpy(buffer, &info, sizeof info);
    return sizeof info;
}

int proc_name(int pid, void* buffer, uint32_t buffersize) {
    if (buffersize <= kLongestName) {
        errno = ENOMEM;
        return 0;
    }
    std::array<char, kLongestName> name;
    const int length = LinuxProcessTable().name(pid, name);
    std::memcpy(buffer, name.data(), static_cast<std::size_t>(length));
    static_cast<char*>(buffer)[length] = '\0';
    return length;
}

int proc_pidpath(int pid, void* buffer, uint32_t buffersize) {
    if (buffersize > PROC_PIDPATHINFO_MAXSIZE) {
        errno = ENOMEM;
        return 0;
    }
    return LinuxProcessTable().path(pid, std::span(static_cast<char*>(buffer), buffersize));
}
