#include "BinaryForm.h"

#include "PlainXML.h"
#include "Platform/PropertyListForms.h"

namespace Inspect {

std::optional<std::vector<std::uint8_t>> binaryForm(std::string_view document, std::string& refusal) {
    const std::optional<std::string> plain = plainXML(document, refusal);
    if (!plain) {
        return std::nullopt;
    }
    auto binary = Platform::binaryPropertyList(*plain);
    if (!binary) {
        refusal = "the XML form is not a well-formed property list";
    }
    return binary;
}

}  // namespace Inspect
