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

/// `text` for one line of a log: printable ASCII as it is, quotes and backslashes after a backslash, every
/// other byte as \xNN, cut to `limit` bytes of input with "..." after it.
[[nodiscard]] std::string printable(std::string_view text, std::size_t limit = 120);

}  // namespace Base
