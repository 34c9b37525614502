#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Base/Coder.h"

namespace Base {

/// The classes that an archive may hold. Everything else refuses it.
struct AllowedClasses {
    /// Classes of objects, by exact class: a superclass here does not allow its subclasses, nor the reverse.
    std::span<const CodedClass* const> objects;
    /// Names of the containers and values: "NSArray", "NSURL", "NSString", "NSNumber" (their mutable forms
    /// are included).
    std::span<const std::string_view> values;
};

/// Bounds on what a stranger's archive may cost. The defaults are far above any list that the product sends.
struct UnarchivingLimits {
    std::size_t archiveBytes = std::size_t{16} << 20;
    /// Objects built, a shared one counted as often as it is referred to.
    std::size_t objects = std::size_t{1} << 18;
    /// Bytes of text built, counted the same way.
    std::size_t textBytes = std::size_t{64} << 20;
};

/// Reads the list of objects that `archivedArray` or another keyed archiver wrote.
///
/// `archive` is a binary property list of any origin, hostile ones included. Every count, offset and
/// reference is checked before anything is allocated or built; the depth of the input is never followed
/// recursively; the first fault refuses the whole archive. On success returns the objects in order, each of a
/// class in `allowed`. On failure returns nothing and sets `refusal` to a sentence that says what was
/// refused and where. What it quotes of the archive is cut to a length and otherwise as it is there: who
/// shows it escapes it. `refusal` is untouched on success. Nothing is logged.
[[nodiscard]] std::optional<CodedObjectList> unarchivedArray(std::span<const std::uint8_t> archive,
                                                             const AllowedClasses& allowed,
                                                             std::string& refusal,
                                                             const UnarchivingLimits& limits = {});

}  // namespace Base
