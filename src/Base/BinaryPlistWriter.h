#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace Base {

/// Writes a binary property list ("bplist00"), one object after the other, in one pass.
///
/// Every object has an id, handed out before it is written, so that a container can be written before or
/// after its members. Each id has to be written exactly once. References take `referenceSize` bytes (2 or 4);
/// when more ids were handed out than fit, `finish` returns nothing usable: see `overflowed`.
class BinaryPlistWriter {
  public:
    using ObjectId = std::uint32_t;

    explicit BinaryPlistWriter(std::size_t referenceSize);

    /// Hands out the next id, counting from 0.
    ObjectId newObject() {
        offsets_.push_back(0);
        return static_cast<ObjectId>(offsets_.size() - 1);
    }
    /// Whether more ids were handed out than `referenceSize` can hold.
    [[nodiscard]] bool overflowed() const {
        return offsets_.size() > (std::uint64_t{1} << 8 * referenceSize_);
    }

    void writeBool(ObjectId id, bool value);
    void writeInteger(ObjectId id, std::uint32_t value);
    void writeUID(ObjectId id, std::uint32_t value);
    /// UTF-8 text: stored as ASCII when it is, otherwise as UTF-16, with U+FFFD for what is not valid.
    void writeText(ObjectId id, std::string_view text);
    /// The textual form of the file URL of `path`.
    void writeFileURL(ObjectId id, std::string_view path);
    void writeArray(ObjectId id, std::span<const ObjectId> members);
    /// `keys` and `values` have the same length.
    void writeDictionary(ObjectId id, std::span<const ObjectId> keys, std::span<const ObjectId> values);

    /// Ends the list, whose outermost object is `top`, and returns its bytes. Nothing may be written
    /// afterwards.
    [[nodiscard]] std::vector<std::uint8_t> finish(ObjectId top);

  private:
    void reserve(std::size_t bytes) {
        if (capacity_ - size_ < bytes) {
            grow(bytes);
        }
    }
    void grow(std::size_t bytes);
    void begin(ObjectId id) { offsets_[id] = size_; }
    // The rest needs room that was reserved.
    void put(unsigned byte) { bytes_[size_++] = static_cast<std::uint8_t>(byte); }
    void putBigEndian(std::uint64_t value, std::size_t bytes) {
        for (std::size_t i = bytes; i-- > 0;) {
            put(static_cast<unsigned>(value >> 8 * i & 0xFF));
        }
    }
    void putHeader(unsigned type, std::size_t count);
    void putReferences(std::span<const ObjectId> members);

    std::size_t referenceSize_;
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
    std::vector<std::uint64_t> offsets_;
};

}  // namespace Base
