#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Inspect {

/// The binary form of an XML property list of any origin. A dictionary whose only key is CF$UID, the XML form
/// of a reference between archived objects, becomes such a reference again. Returns nothing and sets
/// `refusal` if the document is not a property list or exceeds a bound (see `plainXML`).
[[nodiscard]] std::optional<std::vector<std::uint8_t>> binaryForm(std::string_view document,
                                                                  std::string& refusal);

}  // namespace Inspect
