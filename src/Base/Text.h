#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Base {

/// Whether every byte of `text` is below 0x80.
[[nodiscard]] bool isASCII(std::string_view text);

/// The UTF-16 form of the UTF-8 `text`. What is not valid UTF-8 becomes U+FFFD, byte by byte; nothing is
/// refused.
[[nodiscard]] std::u16string utf16FromUTF8(std::string_view text);

/// The UTF-8 form of UTF-16 units stored big-endian in `bytes`, two bytes each. Returns nothing for a lone
/// surrogate.
[[nodiscard]] std::optional<std::string> utf8FromBigEndianUTF16(std::span<const std::uint8_t> bytes);

/// `text`, or as many whole UTF-8 characters of it as fit into `limit` bytes and "..." after them. For
/// foreign names in messages; who shows the message escapes it (see Displayable.h).
[[nodiscard]] std::string excerpt(std::string_view text, std::size_t limit = 120);

}  // namespace Base
