#pragma once

#include "Platform/ServiceManagement.h"

namespace Platform::Darwin {

/// SMJobBless. The reference must come from DarwinAuthorization. An error's description is the one that the
/// system's error gives of itself.
class DarwinServiceManagement final : public ServiceManagement {
  public:
    [[nodiscard]] std::optional<Error> blessJob(LaunchdDomain domain, const std::string& label,
                                                const AuthorizationReference& authorization) override;
};

}  // namespace Platform::Darwin
