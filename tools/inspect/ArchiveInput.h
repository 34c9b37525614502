#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "InstallCommon/Command.h"

namespace Inspect {

/// The largest file that is read at all: the helper's own limit.
inline constexpr std::size_t kLargestArchive = std::size_t{16} << 20;

/// Decodes an archive of a command list under the rules of the helper that executes such lists: the same
/// classes are allowed, the same bounds hold, the first fault refuses everything. The XML form of the
/// property list is accepted as well, up to 4 MiB. Returns nothing and sets `refusal` to a sentence that says
/// what was refused and where; whoever shows it escapes it.
[[nodiscard]] std::optional<InstallCommon::CommandList> decodeCommandList(std::span<const std::uint8_t> bytes,
                                                                          std::string& refusal);

}  // namespace Inspect
