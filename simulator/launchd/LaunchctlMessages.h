#pragma once

#include <string>

#include "launchd/JobRegistry.h"

namespace Simulator {

/// launchctl's output and exit status.
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
/// The usage of a verb.
[[nodiscard]] LaunchctlReply usage(const std::string& text);
/// The same after an invalid target.
[[nodiscard]] LaunchctlReply badTarget(const std::string& text);
[[nodiscard]] LaunchctlReply noService(const DomainId& domain, const std::string& label);
[[nodiscard]] LaunchctlReply noDomain(const std::string& text);
/// The beginning of a verb's failure message.
[[nodiscard]] std::string phrase(const std::string& verb);

}  // namespace Simulator
