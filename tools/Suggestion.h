#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tools {

/// The word that was probably meant: the nearest of `words`, counted in letters to add, leave out, change or
/// swap with their neighbour; nothing if none is near. The first of several that are equally near.
[[nodiscard]] std::optional<std::string> nearestWord(std::string_view word,
                                                     const std::vector<std::string>& words);

/// ": did you mean WORD?", or nothing at all.
[[nodiscard]] std::string didYouMean(std::string_view word, const std::vector<std::string>& words);

}  // namespace Tools
