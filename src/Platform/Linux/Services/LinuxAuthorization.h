#pragma once

#include <string>
#include <utility>

#include "Platform/Authorization.h"
#include "Platform/Linux/Services/MacServices.h"

namespace Platform::Linux {

/// The token that process 1 of the simulated Mac issued for an authorization session that it granted.
class LinuxAuthorizationReference final : public AuthorizationReference {
  public:
    explicit LinuxAuthorizationReference(std::string token) : token_(std::move(token)) {}

    /// Names the session to process 1; good for this process only.
    [[nodiscard]] const std::string& token() const { return token_; }

  private:
    std::string token_;
};

/// Authorization sessions kept by process 1 of the simulated Mac. A session has a reference from its first
/// grant on.
class LinuxAuthorization final : public Authorization {
  public:
    explicit LinuxAuthorization(MacServices services = MacServices()) : services_(std::move(services)) {}

    [[nodiscard]] std::unique_ptr<SFAuthorization> create() override;

  private:
    MacServices services_;
};

}  // namespace Platform::Linux
