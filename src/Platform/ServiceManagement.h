#pragma once

#include <optional>
#include <string>

#include "Platform/Authorization.h"
#include "Platform/Error.h"

namespace Platform {

/// launchd domains (kSMDomainSystemLaunchd is the only one that can be blessed into).
enum class LaunchdDomain { system };

/// Installation of privileged helper tools (ServiceManagement).
class ServiceManagement {
  public:
    virtual ~ServiceManagement() = default;

    /// SMJobBless: installs the helper with this label from the running program's
    /// Contents/Library/LaunchServices as a root-owned tool and registers its job, replacing an older one.
    /// Both sides must name each other (SMPrivilegedExecutables, SMAuthorizedClients). Blocks; returns the
    /// error on failure; logs nothing.
    [[nodiscard]] virtual std::optional<Error> blessJob(LaunchdDomain domain, const std::string& label,
                                                        const AuthorizationReference& authorization) = 0;
};

}  // namespace Platform
