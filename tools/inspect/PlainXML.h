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
/// declaration, comment, instruction, attribute or CDATA section. Any later reader finds no deeper nesting
/// and no more elements than counted here.
///
/// Returns nothing and sets `refusal` to a few words and a line number if the text is not UTF-8, contains
/// control characters, a broken tag or its own document type, or exceeds a limit. Does not check whether the
/// tags match and mean something.
[[nodiscard]] std::optional<std::string> plainXML(std::string_view document, std::string& refusal,
                                                  const XMLLimits& limits = {});

}  // namespace Inspect
