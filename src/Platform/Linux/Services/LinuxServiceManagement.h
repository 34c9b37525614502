#pragma once

#include <utility>

#include "Platform/Linux/Services/MacServices.h"
#include "Platform/ServiceManagement.h"

namespace Platform::Linux {

/// Blessing by process 1 of the simulated Mac. The reference must come from LinuxAuthorization.
class LinuxServiceManagement final : public ServiceManagement {
  public:
    explicit LinuxServiceManagement(MacServices services = MacServices()) : services_(std::move(services)) {}

    [[nodiscard]] std::optional<Error> blessJob(LaunchdDomain domain, const std::string& label,
                                                const AuthorizationReference& authorization) override;

  private:
    MacServices services_;
};

}  // namespace Platform::Linux
