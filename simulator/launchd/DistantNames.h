#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "Support/Machine.h"
#include "launchd/JobRegistry.h"

namespace Simulator {

/// The names under which running jobs of the system offer distant objects. A name exists exactly as long as
/// its job's process.
class DistantNames {
  public:
    struct Owner {
        pid_t pid;
        std::uint64_t start;
    };

    DistantNames(const Machine& machine, const JobRegistry& jobs) : machine_(machine), jobs_(jobs) {}

    [[nodiscard]] std::optional<Owner> owner(const std::string& name) const;
    /// All names that are registered, in alphabetical order.
    [[nodiscard]] std::vector<std::string> names() const;

  private:
    [[nodiscard]] std::optional<Owner> processOf(const std::string& label) const;

    const Machine& machine_;
    const JobRegistry& jobs_;
};

}  // namespace Simulator
