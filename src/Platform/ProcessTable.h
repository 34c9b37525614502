#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Platform {

/// Which processes listPids counts and lists (libproc's PROC_ALL_PIDS and PROC_UID_ONLY).
enum class PidListType : std::uint32_t { all = 1, effectiveUser = 4 };

/// The kernel's facts about running processes (libproc) and signals. Calls may come from any thread; nothing
/// is logged.
class ProcessTable {
  public:
    virtual ~ProcessTable() = default;

    /// Fills `pids` with as many process ids as fit, in no particular order, and returns at least how many;
    /// the span beyond the ids is untouched. With an empty span the result is at least the number that a call
    /// would list at that moment. 0 or less on failure. `user` is used for `effectiveUser` only.
    virtual int listPids(PidListType type, std::uint32_t user, std::span<std::int32_t> pids) = 0;

    /// The effective user id. Returns more than 0 on success and sets `user`; otherwise does not touch it.
    virtual int effectiveUser(std::int32_t pid, std::uint32_t& user) = 0;

    /// The process's own name as UTF-8 without a terminator. Returns the number of bytes written to `name`, 0
    /// if the process has no name or is gone. A Mac's kernel keeps 31 bytes of it: a longer name comes
    /// without its end, and without a character that was cut in two.
    virtual int name(std::int32_t pid, std::span<char> name) = 0;

    /// The absolute path of the executable, like `name`. 0 for a process that has none or whose path cannot
    /// be read.
    virtual int path(std::int32_t pid, std::span<char> path) = 0;

    /// kill(2): 0 or -1.
    virtual int kill(std::int32_t pid, int signal) = 0;
};

}  // namespace Platform
