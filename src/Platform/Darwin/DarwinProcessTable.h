#pragma once

#include "Platform/ProcessTable.h"

namespace Platform::Darwin {

/// The process table as libproc shows it. The kernel keeps the first 32 bytes of a process's name. A zombie
/// and a process of the kernel's own have no path.
class DarwinProcessTable final : public ProcessTable {
  public:
    int listPids(PidListType type, std::uint32_t user, std::span<std::int32_t> pids) override;
    int effectiveUser(std::int32_t pid, std::uint32_t& user) override;
    int name(std::int32_t pid, std::span<char> name) override;
    int path(std::int32_t pid, std::span<char> path) override;
    int kill(std::int32_t pid, int signal) override;
};

}  // namespace Platform::Darwin
