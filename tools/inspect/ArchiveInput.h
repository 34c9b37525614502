#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "InstallCommon/Command.h"

namespace Inspect {

/// The largest file that is read at all: what the helper takes.
inline constexpr std::size_t kLargestArchive = std::size_t{16} << 20;

/// Decodes an archive of a command list under the rules of the helper that executes such lists: the same
/// classes are allowed, the same bounds hold, the first fault refuses everything. In addition the XML form of
/// the property list is taken, up to 4 MiB. Returns nothing and sets `refusal` to a sentence that says what
/// was refused and where; who shows it escapes it.
[[nodiscard]] std::optional<InstallCommon::CommandList> decodeCommandList(std::span<const std::uint8_t> bytes,
                                                                          std::string& refusal);

}  // namespace Inspect
