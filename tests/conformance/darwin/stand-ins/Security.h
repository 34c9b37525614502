#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A connection's peer, and the code-signing services that stand in for the system's own: what they are asked
/// and what they answer.
namespace StandIns {

using Token = std::array<std::uint32_t, 8>;

struct Signing {
    // The peer.
    Token token{};
    bool hasToken = true;
    bool takesRequirement = true;
    // What the system knows of its code.
    bool isRunning = true;
    bool isValid = true;
    /// The requirements that it satisfies.
    std::vector<std::string> satisfied;
    /// Texts that are not requirements: an error, or (as a service that breaks its promise) neither.
    std::vector<std::string> malformed;
    bool tellsOfMalformed = true;
    /// Of its signature; nothing for code without one.
    std::optional<std::uint32_t> flags = 0x10000;
    /// The entitlements that it was signed with.
    std::vector<std::string> entitlements;
    // What was asked.
    std::vector<Token> asked;
    bool askedOtherwise = false;
    /// What the connection was told to hold every message against.
    std::vector<std::string> held;
    /// Objects of these services that were not released.
    int objects = 0;
};

extern Signing signing;

/// refusalOfPeer for a connection with this peer.
[[nodiscard]] std::optional<std::string> refusal(const std::vector<std::string>& requirements);

}  // namespace StandIns
