#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "Base/Archive/BinaryPlistFormat.h"

namespace Base {

/// Writes a binary property list, one object after another. BinaryPlistFormat.h describes the format.
///
/// An object gets its id before it is written, so that a container can be written before or after its
/// members. Each id is written exactly once. References take `referenceSize` bytes, 2 or 4; the list is
/// useless if `overflowed`.
class BinaryPlistWriter {
  public:
    using ObjectId = BinaryPlist::ObjectId;

    struct Pair {
        ObjectId key;
        ObjectId value;
    };

    explicit BinaryPlistWriter(std::size_t referenceSize);

    /// Hands out the next id, counting from 0.
    ObjectId newObject();
    /// Whether more ids were handed out than `referenceSize` can hold.
    [[nodiscard]] bool overflowed() const;

    void writeBool(ObjectId id, bool value);
    void writeInteger(ObjectId id, std::uint32_t value);
    void writeUID(ObjectId id, std::uint32_t value);
    /// UTF-8 text: stored as ASCII if it is ASCII, otherwise as UTF-16, with U+FFFD for invalid bytes.
    void writeText(ObjectId id, std::string_view text);
    void writeArray(ObjectId id, std::span<const ObjectId> members);
    void writeDictionary(ObjectId id, std::span<const Pair> pairs);

    /// Completes the list, whose outermost object is `top`, and returns its bytes. Nothing may be written
    /// afterwards.
    [[nodiscard]] std::vector<std::uint8_t> finish(ObjectId top);

  private:
    void begin(ObjectId id) { offsets_[id] = size_; }
    // Makes room for the next `count` bytes. Everything that is written goes through here.
    std::uint8_t* claim(std::size_t count) {
        if (bytes_.size() - size_ < count) {
            bytes_.resize(2 * bytes_.size() + count);
        }
        size_ += count;
        return bytes_.data() + size_ - count;
    }
    void put(unsigned byte) { *claim(1) = static_cast<std::uint8_t>(byte); }
    // Big-endian, in `width` bytes.
    void putNumber(std::uint64_t value, std::size_t width) {
        std::uint8_t* const bytes = claim(width);
        for (std::size_t i = width; i-- > 0; value >>= 8U) {
            bytes[i] = static_cast<std::uint8_t>(value);
        }
    }
    // An integer object without an id.
    void putInteger(std::uint64_t value);
    void putMarker(unsigned kind, std::size_t count);

    std::size_t referenceSize_;
    std::vector<std::uint8_t> bytes_;  // of which `size_` are written
    std::size_t size_ = 0;
    std::vector<std::uint64_t> offsets_;
};

}  // namespace Base
