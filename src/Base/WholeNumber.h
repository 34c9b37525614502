#pragma once

#include <charconv>
#include <concepts>
#include <optional>
#include <string_view>
#include <system_error>

namespace Base {

/// The decimal number that is all of `text`. Returns nothing if anything else is there, or if `Number` cannot
/// hold it.
template <std::integral Number>
[[nodiscard]] std::optional<Number> wholeNumber(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

}  // namespace Base
