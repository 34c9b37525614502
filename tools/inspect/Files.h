#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Inspect {

/// Reads the whole of `file`, which may be a pipe; "-" is standard input. Returns nothing and sets `refusal`
/// to a few words if it cannot be read, is a folder or holds more than `limit` bytes; no more than that is
/// ever held.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> readFile(const std::string& file, std::size_t limit,
                                                                std::string& refusal);

/// Writes everything to standard output. Returns false and sets `refusal` on the first failure.
[[nodiscard]] bool writeStandardOutput(std::string_view bytes, std::string& refusal);

/// Puts `bytes` at `file`, whole or not at all: they are written to a new file in the same folder, which then
/// replaces an older one. An older file that is not a regular one (a link, a device, a folder) is refused.
/// Signals that would end the process wait until no new file is left behind. Returns false and sets `refusal`
/// on failure; the older file is then unchanged.
[[nodiscard]] bool replaceFile(const std::string& file, std::span<const std::uint8_t> bytes,
                               std::string& refusal);

/// The width of the terminal behind standard output: the environment's COLUMNS, or the terminal's own answer,
/// or 120.
[[nodiscard]] std::size_t outputWidth();

}  // namespace Inspect
