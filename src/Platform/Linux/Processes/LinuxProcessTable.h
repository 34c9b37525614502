#pragma once

#include "Platform/ProcessTable.h"

namespace Platform::Linux {

/// The process table as /proc shows it.
///
/// The kernel keeps only the first 15 bytes of a process's name. The rest of a name that may have been cut
/// comes from the executable's file name, or for a script from its argument vector. Zombies and the kernel's
/// threads have no path.
class LinuxProcessTable final : public ProcessTable {
  public:
    int listPids(PidListType type, std::uint32_t user, std::span<std::int32_t> pids) override;
    int effectiveUser(std::int32_t pid, std::uint32_t& user) override;
    int name(std::int32_t pid, std::span<char> name) override;
    int path(std::int32_t pid, std::span<char> path) override;
    int kill(std::int32_t pid, int signal) override;
};

}  // namespace Platform::Linux
