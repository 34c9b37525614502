#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace Platform {

/// The binary form of a property list in XML, by the system's own reader and writer. A dictionary whose only
/// key is CF$UID, the XML form of a reference between archived objects, becomes such a reference again.
/// Returns nothing if the text is not a property list in XML. The reader follows nesting recursively: a
/// caller with a stranger's text bounds its depth and size first. Each system has its own source file for it,
/// which createInspectionPorts() comes with.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> binaryPropertyList(std::string_view xml);

}  // namespace Platform
