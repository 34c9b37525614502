#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Platform/Authorization.h"
#include "Platform/DistantObjects.h"
#include "Platform/KernelExtensions.h"
#include "Platform/Linux/Services/MacServices.h"
#include "Platform/ServiceManagement.h"

/// The ports that process 1 of the simulated Mac answers, one request each (see MacServices.h).
namespace Platform::Linux {

/// The token that process 1 issued for an authorization session that it granted.
class LinuxAuthorizationReference final : public AuthorizationReference {
  public:
    explicit LinuxAuthorizationReference(std::string token) : token_(std::move(token)) {}

    /// Names the session to process 1; good for this process only.
    [[nodiscard]] const std::string& token() const { return token_; }

  private:
    std::string token_;
};

/// A session has a reference from its first grant on.
class LinuxAuthorization final : public AnsweredByProcessOne<Authorization> {
  public:
    using AnsweredByProcessOne::AnsweredByProcessOne;
    [[nodiscard]] std::unique_ptr<SFAuthorization> create() override;
};

/// The reference must come from LinuxAuthorization.
class LinuxServiceManagement final : public AnsweredByProcessOne<ServiceManagement> {
  public:
    using AnsweredByProcessOne::AnsweredByProcessOne;
    [[nodiscard]] std::optional<Error> blessJob(LaunchdDomain domain, const std::string& label,
                                                const AuthorizationReference& authorization) override;
};

class LinuxKernelExtensions final : public AnsweredByProcessOne<KernelExtensions> {
  public:
    using AnsweredByProcessOne::AnsweredByProcessOne;
    std::int32_t unload(const std::string& bundleIdentifier) override;
};

/// Names that processes have registered. A proxy stands for the process that had the name at the lookup: it
/// is invalid, in all three respects, as soon as that process no longer has the name, and stays so if another
/// one takes it. Nothing is delivered through it, so it has no request modes to add.
class LinuxDistantObjects final : public AnsweredByProcessOne<DistantObjects> {
  public:
    using AnsweredByProcessOne::AnsweredByProcessOne;
    [[nodiscard]] std::shared_ptr<DistantObject> rootProxy(const std::string& name) override;
};

}  // namespace Platform::Linux
