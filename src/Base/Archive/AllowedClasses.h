#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "Base/Archive/Coder.h"

namespace Base {

/// The classes that an archive may hold. Any other class refuses the archive.
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
    /// Objects built; a shared one counts as often as it is referred to.
    std::size_t objects = std::size_t{1} << 18;
    /// Bytes of text built, counted the same way.
    std::size_t textBytes = std::size_t{64} << 20;
};

}  // namespace Base
