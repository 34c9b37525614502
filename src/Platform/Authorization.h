#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Platform {

/// One right or one environment entry (AuthorizationItem).
struct AuthorizationItem {
    std::string name;
    /// UTF-8; empty for a null value.
    std::optional<std::string> value;
    /// The length that is passed to the system for `value`.
    std::size_t valueLength = 0;
    std::uint32_t flags = 0;

    friend bool operator==(const AuthorizationItem&, const AuthorizationItem&) = default;
};

/// The system's authorization reference (AuthorizationRef), opaque here; valid while its owner lives.
class AuthorizationReference {
  public:
    virtual ~AuthorizationReference() = default;
};

/// An authorization session (SFAuthorization). Nothing is logged.
class SFAuthorization {
  public:
    /// Ends the session and gives its rights back.
    virtual ~SFAuthorization() = default;

    /// Obtains `rights`. `flags` are the Security framework's (1 interaction allowed, 2 extend rights); with
    /// interaction the system may show its administrator dialog and the call blocks until it is answered.
    /// Returns whether all rights were granted.
    [[nodiscard]] virtual bool obtainWithRights(const std::vector<AuthorizationItem>& rights,
                                                std::uint32_t flags,
                                                const std::vector<AuthorizationItem>& environment) = 0;

    /// The underlying reference, owned by the session; null if it has none.
    [[nodiscard]] virtual const AuthorizationReference* authorizationRef() const = 0;
};

class Authorization {
  public:
    virtual ~Authorization() = default;

    /// A new session without rights. Never null.
    [[nodiscard]] virtual std::unique_ptr<SFAuthorization> create() = 0;
};

}  // namespace Platform
