#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Inspect {

/// Bounds on an XML property list.
struct XMLLimits {
    std::size_t depth = 64;
    std::size_t elements = std::size_t{1} << 18;
};

/// Rewrites an XML document of any origin so that nothing but bare tags and text is left: no byte-order mark,
/// declaration, comment, instruction, attribute or CDATA section. What is read afterwards nests no deeper and
/// has no more elements than counted here, whatever reads it.
///
/// Returns nothing and sets `refusal` to a few words and a line number when the text is not UTF-8, holds
/// control characters, a broken tag or a document type of its own, or exceeds a limit. Whether the tags match
/// and mean something is not looked at.
[[nodiscard]] std::optional<std::string> plainXML(std::string_view document, std::string& refusal,
                                                  const XMLLimits& limits = {});

}  // namespace Inspect
