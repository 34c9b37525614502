#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Inspect {

/// The meaning of a number in the log.
struct CodeMeaning {
    /// The constant's name.
    std::string_view name;
    /// A phrase.
    std::string_view meaning;
    /// The remedy, a sentence; empty if it is normal.
    std::string_view advice;
    /// Whether the number only says that there was nothing to do.
    bool isNormal = false;
};

/// A kernel extension's return code as the log writes it: signed, hexadecimal, "-23ff7ffa" (OSReturn.h,
/// OSKextLib.h). Returns nothing for a text of another form or an unknown code.
[[nodiscard]] std::optional<CodeMeaning> kextCode(std::string_view text);

/// launchctl's exit status (`launchctl error`).
[[nodiscard]] std::optional<CodeMeaning> launchctlStatus(std::int32_t status);

/// The code of SMJobBless's error (SMErrors.h, CFErrorDomainLaunchd).
[[nodiscard]] std::optional<CodeMeaning> blessingCode(std::int32_t code);

}  // namespace Inspect
