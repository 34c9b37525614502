#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Platform {

/// The password database (getpwent(3)) and the user ids of this process. The walk has one process-wide
/// position: one walk at a time. Nothing is logged.
class Users {
  public:
    struct Entry {
        std::uint32_t uid = 0;
        /// The home folder as it stands in the database; empty if the entry has none.
        std::string home;
    };

    virtual ~Users() = default;

    /// setpwent: the next entry is the first one.
    virtual void rewind() = 0;
    /// getpwent: the next entry, or nothing at the end or on a read error.
    [[nodiscard]] virtual std::optional<Entry> next() = 0;
    /// endpwent.
    virtual void close() = 0;

    /// getuid.
    [[nodiscard]] virtual std::uint32_t realUserId() = 0;
    /// seteuid, for the whole process: 0 or -1.
    virtual int setEffectiveUserId(std::uint32_t uid) = 0;
};

}  // namespace Platform
