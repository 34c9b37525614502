#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>

#include "Support/Faults.h"
#include "launchd/Caller.h"

namespace Simulator {

inline constexpr std::int32_t kAuthorizationDenied = -60005;
inline constexpr std::int32_t kAuthorizationInteractionNotAllowed = -60007;

/// The security server: which process holds which authorization.
class Authorizations {
  public:
    explicit Authorizations(const Faults& faults) : faults_(faults) {}

    /// Decides on a request for rights. Returns 0 and sets `token`, or the OSStatus of the refusal. Root gets
    /// what it asks for; anybody else would have to give a password.
    std::int32_t authorize(const Caller& caller, std::uint32_t flags, std::span<const std::string> rights,
                           std::string& token);

    /// Whether `token` was given to exactly this process.
    [[nodiscard]] bool isValid(const std::string& token, const Caller& caller) const;
    /// Only the owner can release a token.
    void release(const std::string& token, const Caller& caller);

  private:
    struct Owner {
        pid_t pid;
        std::uint64_t start;
    };

    /// Asks the user of the caller's session for an administrator's password.
    [[nodiscard]] std::int32_t askUser(const Caller& caller, std::uint32_t flags) const;
    void forgetDead();

    const Faults& faults_;
    std::map<std::string, Owner, std::less<>> tokens_;
};

}  // namespace Simulator
