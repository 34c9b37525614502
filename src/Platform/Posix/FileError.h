#pragma once

#include <string>
#include <string_view>

#include "Platform/Error.h"

namespace Platform::Posix {

/// The words of an errno value, in English.
[[nodiscard]] std::string errorText(int code);

/// An error in the one form that all file operations use: "PATH" could not be OUTCOME: TEXT. `outcome` is
/// "created", "listed", "removed" or `copied to "DESTINATION"`; `code` is an errno value.
[[nodiscard]] Error fileError(std::string_view path, std::string_view outcome, int code);

/// The same with the caller's own reason instead of the errno value's words.
[[nodiscard]] Error fileError(std::string_view path, std::string_view outcome, std::string_view reason,
                              int code);

}  // namespace Platform::Posix
