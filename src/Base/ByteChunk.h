#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Base {

/// Sixteen bytes looked at in one step. Comparisons with a byte give 0xFF where they hold and 0 elsewhere;
/// the compilers of both systems turn them into the processor's own vector instructions.
using ByteChunk [[gnu::vector_size(16)]] = std::uint8_t;

inline constexpr std::size_t kByteChunkSize = sizeof(ByteChunk);

/// The 16 bytes at `bytes`, which needs no alignment.
inline ByteChunk loadChunk(const void* bytes) {
    ByteChunk chunk;
    std::memcpy(&chunk, bytes, sizeof chunk);
    return chunk;
}

/// Where `chunk` equals `byte`.
inline ByteChunk equalTo(ByteChunk chunk, std::uint8_t byte) {
    return reinterpret_cast<ByteChunk>(chunk == byte);
}

/// Where `chunk` lies between `low` and `high`, both included.
inline ByteChunk within(ByteChunk chunk, std::uint8_t low, std::uint8_t high) {
    return reinterpret_cast<ByteChunk>((chunk - low) <= static_cast<std::uint8_t>(high - low));
}

/// Whether any bit of `chunk` is set.
inline bool anySet(ByteChunk chunk) {
    std::uint64_t halves[2];
    std::memcpy(halves, &chunk, sizeof halves);
    return (halves[0] | halves[1]) != 0;
}

/// Whether two short texts are equal, without a call.
inline bool sameText(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    // The first and the last bytes, which overlap or meet.
    const auto sameEnds = [a, b]<class Word>(Word /*one*/) {
        const auto load = [](const char* bytes) {
            Word word = 0;
            std::memcpy(&word, bytes, sizeof word);
            return word;
        };
        const std::size_t last = a.size() - sizeof(Word);
        return load(a.data()) == load(b.data()) && load(a.data() + last) == load(b.data() + last);
    };
    if (a.size() >= sizeof(std::uint64_t) && a.size() <= 2 * sizeof(std::uint64_t)) {
        return sameEnds(std::uint64_t{});
    }
    if (a.size() >= sizeof(std::uint32_t) && a.size() < sizeof(std::uint64_t)) {
        return sameEnds(std::uint32_t{});
    }
    return a == b;
}

}  // namespace Base
