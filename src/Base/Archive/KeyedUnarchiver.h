#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "Base/Archive/AllowedClasses.h"
#include "Base/Archive/Coder.h"

namespace Base {

/// Reads the list of objects that `archivedArray` or another keyed archiver wrote.
///
/// `archive` is a binary property list of any origin, hostile ones included. Every count, offset and
/// reference is checked before anything is allocated or built; the depth of the input is never followed
/// recursively; the first fault refuses the whole archive. On success returns the objects in order, each of a
/// class in `allowed`. On failure returns nothing and sets `refusal` to a sentence that says what was refused
/// and where. It quotes the archive shortened but unescaped: whoever shows it escapes it. `refusal` is
/// untouched on success. Nothing is logged.
[[nodiscard]] std::optional<CodedObjectList> unarchivedArray(std::span<const std::uint8_t> archive,
                                                             const AllowedClasses& allowed,
                                                             std::string& refusal,
                                                             const UnarchivingLimits& limits = {});

}  // namespace Base
