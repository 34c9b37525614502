#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Base {

/// `text`, or as many whole UTF-8 characters of it as fit into `limit` bytes, then "...". For foreign names
/// in messages; whoever shows the message escapes it (see Displayable.h).
[[nodiscard]] std::string excerpt(std::string_view text, std::size_t limit = 120);

}  // namespace Base
