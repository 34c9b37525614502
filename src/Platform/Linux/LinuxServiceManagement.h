#pragma once

#include "Platform/ServiceManagement.h"

namespace Platform::Linux {

/// Blessing by process 1 of the simulated Mac. The reference must come from LinuxAuthorization.
class LinuxServiceManagement final : public ServiceManagement {
  public:
    [[nodiscard]] std::optional<Error> blessJob(LaunchdDomain domain, const std::string& label,
                                                const AuthorizationReference& authorization) override;
};

}  // namespace Platform::Linux
