#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Base/Archive/Coder.h"

namespace Base {

/// Writes `objects`, in order, as a keyed archive: a binary property list ("bplist00") whose "$top" holds an
/// NSArray of the objects under "root"; "$archiver" is "NSKeyedArchiver", "$version" 100000. The same input
/// always gives the same bytes. Never fails; nothing is logged.
[[nodiscard]] std::vector<std::uint8_t> archivedArray(std::span<const CodedObject* const> objects);

}  // namespace Base
