#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Base/URL.h"

namespace NorvikCommon {

/// Stands for all users wherever a user id selects processes.
inline constexpr std::uint32_t kAllUsersId = 0x7FFFFFFF;

/// Facts about one process id from the kernel's process-information calls. Stateless; nothing is logged;
/// every lookup returns nothing on failure. May be used on any thread.
class PMProcessUtil {
  public:
    /// The one instance, made once per process.
    [[nodiscard]] static const PMProcessUtil& shared();

    /// The ids of the running processes whose effective user is `uid`, or of all for kAllUsersId. No
    /// duplicates; in no particular order.
    [[nodiscard]] std::vector<std::int32_t> collectPidsForUser(std::uint32_t uid) const;
    /// The effective user id.
    [[nodiscard]] std::optional<std::uint32_t> processUidForPid(std::int32_t pid) const;
    /// The process's name, or the last component of its executable's path if it has none.
    [[nodiscard]] std::optional<std::string> processNameForPid(std::int32_t pid) const;
    /// The executable's full path.
    [[nodiscard]] std::optional<Base::URL> processLocationForPid(std::int32_t pid) const;

  private:
    PMProcessUtil() = default;
};

}  // namespace NorvikCommon
