#pragma once

#include <string>

#include "launchd/JobRegistry.h"

namespace Simulator {

/// What launchctl prints and exits with.
struct LaunchctlReply {
    int status = 0;
    std::string out;
    std::string err;
};

inline constexpr int kUsage = 64;
inline constexpr int kNotPermitted = 1;

/// launchctl's own help.
[[nodiscard]] const std::string& launchctlHelp();

/// "WHAT: CODE: words", with the code as exit status.
[[nodiscard]] LaunchctlReply failed(const std::string& what, int code);
/// How to call a verb.
[[nodiscard]] LaunchctlReply usage(const std::string& text);
/// The same after a target that is none.
[[nodiscard]] LaunchctlReply badTarget(const std::string& text);
[[nodiscard]] LaunchctlReply noService(const DomainId& domain, const std::string& label);
[[nodiscard]] LaunchctlReply noDomain(const std::string& text);
/// What a verb's failure begins with.
[[nodiscard]] std::string phrase(const std::string& verb);

}  // namespace Simulator
