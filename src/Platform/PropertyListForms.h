#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace Platform {

/// The binary form of a property list in XML, by the system's own reader and writer. A dictionary whose only
/// key is CF$UID, as which a reference between archived objects is written in XML, becomes such a reference
/// again. Nothing when the text is not a property list in XML. The reader follows nesting recursively:
/// whoever hands it a stranger's text has bounded its depth and size. Each system has its own source file for
/// it, which createInspectionPorts() comes with.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> binaryPropertyList(std::string_view xml);

}  // namespace Platform
