#include "Base/PathEscaping.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "Base/ByteChunk.h"

namespace Base {
namespace {

// What a path holds literally besides letters and digits. ';' is legal in a URL's path and escaped all the
// same, as the system's own file URLs have it.
constexpr std::string_view kLiteralMarks = "-._~!$&'()*+,=:@/";

constexpr bool isLiteral(unsigned char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           kLiteralMarks.find(static_cast<char>(byte)) != std::string_view::npos;
}

constexpr std::array<bool, 256> kLiteral = [] {
    std::array<bool, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        table[byte] = isLiteral(static_cast<unsigned char>(byte));
    }
    return table;
}();

// True when the chunk holds only bytes of the ranges that cover nearly every path. A chunk with a rarer
// literal goes the slow way, with the same result.
bool isPlainlyLiteral(ByteChunk chunk) {
    const ByteChunk literal =
        within(chunk, '&', ':') | within(chunk, '@', 'Z') | within(chunk, 'a', 'z') | equalTo(chunk, '_');
    return !anySet(~literal);
}

char* writeEscaped(char* out, const char* bytes, std::size_t count) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (std::size_t i = 0; i < count; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (kLiteral[byte]) {
            *out++ = bytes[i];
        } else {
            *out++ = '%';
            *out++ = kDigits[byte >> 4];
            *out++ = kDigits[byte & 15];
        }
    }
    return out;
}

}  // namespace

char* writeFileURL(char* out, std::string_view path) {
    constexpr std::string_view kScheme = "file://";
    std::memcpy(out, kScheme.data(), kScheme.size());
    out += kScheme.size();
    const char* bytes = path.data();
    std::size_t left = path.size();
    for (; left >= kByteChunkSize; bytes += kByteChunkSize, left -= kByteChunkSize) {
        if (isPlainlyLiteral(loadChunk(bytes))) {
            std::memcpy(out, bytes, kByteChunkSize);
            out += kByteChunkSize;
        } else {
            out = writeEscaped(out, bytes, kByteChunkSize);
        }
    }
    return writeEscaped(out, bytes, left);
}

}  // namespace Base
