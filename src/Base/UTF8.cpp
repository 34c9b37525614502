#include "Base/UTF8.h"

namespace Base {

UTF8Character firstUTF8Character(std::string_view bytes) {
    constexpr UTF8Character kNone{0, 0};
    const auto at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = at(0);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) {
        return kNone;
    }
    char32_t value = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0U) != 0x80U) {
            return kNone;
        }
        value = (value << 6U) | (at(i) & 0x3FU);
    }
    const bool overlong = (length == 3 && value < 0x800) || (length == 4 && value < 0x10000);
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    return overlong || surrogate || value > 0x10FFFF ? kNone : UTF8Character{value, length};
}

bool isValidUTF8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t length = firstUTF8Character(bytes).bytes;
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
    return true;
}

}  // namespace Base
