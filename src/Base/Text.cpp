#include "Base/Text.h"

#include "Base/ByteChunk.h"
#include "Base/UTF8.h"

namespace Base {
namespace {

void appendUTF8(std::string& text, char32_t value) {
    const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (value < 0x80) {
        append(value);
    } else if (value < 0x800) {
        append(0xC0 | value >> 6);
        append(0x80 | (value & 0x3F));
    } else if (value < 0x10000) {
        append(0xE0 | value >> 12);
        append(0x80 | (value >> 6 & 0x3F));
        append(0x80 | (value & 0x3F));
    } else {
        append(0xF0 | value >> 18);
        append(0x80 | (value >> 12 & 0x3F));
        append(0x80 | (value >> 6 & 0x3F));
        append(0x80 | (value & 0x3F));
    }
}

}  // namespace

bool isASCII(std::string_view text) {
    const char* const bytes = text.data();
    const std::size_t size = text.size();
    if (size >= kByteChunkSize) {
        // The last chunk overlaps the one before it.
        ByteChunk seen = loadChunk(bytes + size - kByteChunkSize);
        for (std::size_t at = 0; at + kByteChunkSize < size; at += kByteChunkSize) {
            seen |= loadChunk(bytes + at);
        }
        return !anySet(within(seen, 0x80, 0xFF));
    }
    if (size >= sizeof(std::uint64_t)) {
        std::uint64_t ends[2];
        std::memcpy(&ends[0], bytes, sizeof ends[0]);
        std::memcpy(&ends[1], bytes + size - sizeof ends[1], sizeof ends[1]);
        return ((ends[0] | ends[1]) & 0x8080808080808080U) == 0;
    }
    unsigned seen = 0;
    for (const char c : text) {
        seen |= static_cast<unsigned char>(c);
    }
    return seen < 0x80;
}

std::u16string utf16FromUTF8(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    while (!text.empty()) {
        const UTF8Character character = firstUTF8Character(text);
        if (character.bytes == 0) {
            units += u'\uFFFD';
            text.remove_prefix(1);
            continue;
        }
        text.remove_prefix(character.bytes);
        if (character.value < 0x10000) {
            units += static_cast<char16_t>(character.value);
        } else {
            const char32_t rest = character.value - 0x10000;
            units += static_cast<char16_t>(0xD800 | rest >> 10);
            units += static_cast<char16_t>(0xDC00 | (rest & 0x3FF));
        }
    }
    return units;
}

std::optional<std::string> utf8FromBigEndianUTF16(std::span<const std::uint8_t> bytes) {
    const auto unit = [&bytes](std::size_t at) {
        return static_cast<char32_t>(bytes[at] << 8 | bytes[at + 1]);
    };
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at + 2 <= bytes.size(); at += 2) {
        char32_t value = unit(at);
        if (value >= 0xD800 && value < 0xDC00) {
            at += 2;
            const char32_t low = at + 2 <= bytes.size() ? unit(at) : 0;
            if (low < 0xDC00 || low > 0xDFFF) {
                return std::nullopt;
            }
            value = 0x10000 + ((value & 0x3FF) << 10 | (low & 0x3FF));
        } else if (value >= 0xDC00 && value <= 0xDFFF) {
            return std::nullopt;
        }
        appendUTF8(text, value);
    }
    return text;
}

std::string excerpt(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) {
        return std::string(text);
    }
    std::size_t length = limit;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        --length;
    }
    return std::string(text.substr(0, length)) + "...";
}

}  // namespace Base
