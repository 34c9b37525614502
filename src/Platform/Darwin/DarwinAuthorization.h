#pragma once

#include "Platform/Authorization.h"

namespace Platform::Darwin {

/// SFAuthorization. A session has a reference from its making on, unless the system refuses one.
class DarwinAuthorization final : public Authorization {
  public:
    [[nodiscard]] std::unique_ptr<SFAuthorization> create() override;
};

/// The AuthorizationRef of a session.
class DarwinAuthorizationReference final : public AuthorizationReference {
  public:
    /// `reference` is an AuthorizationRef, owned by its session.
    explicit DarwinAuthorizationReference(const void* reference) : reference_(reference) {}

    [[nodiscard]] const void* reference() const { return reference_; }

  private:
    const void* reference_;
};

}  // namespace Platform::Darwin
