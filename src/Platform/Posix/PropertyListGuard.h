#pragma once

#include <string_view>

namespace Platform::Posix {

/// Whether a property list of any origin, XML or binary, can be handed to a parser that follows nesting
/// recursively and builds a shared object as often as it is referred to. Refuses a list that nests too deeply
/// or would grow too large; does not tell whether the list is well formed. The bounds are far above any real
/// information dictionary.
[[nodiscard]] bool isTamePropertyList(std::string_view bytes);

/// Whether the bytes claim to be the binary form.
[[nodiscard]] bool isBinaryPropertyList(std::string_view bytes);

}  // namespace Platform::Posix
