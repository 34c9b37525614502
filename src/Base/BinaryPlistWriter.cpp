#include "Base/BinaryPlistWriter.h"

#include <algorithm>
#include <cstring>

#include "Base/PathEscaping.h"
#include "Base/Text.h"

namespace Base {
namespace {

// Object types, the upper half of an object's first byte.
constexpr unsigned kInteger = 0x10;
constexpr unsigned kASCII = 0x50;
constexpr unsigned kUTF16 = 0x60;
constexpr unsigned kUID = 0x80;
constexpr unsigned kArray = 0xA0;
constexpr unsigned kDictionary = 0xD0;

constexpr std::size_t kHeaderCapacity = 10;  // a type byte, an integer's type byte, 8 bytes of count
// Room for the largest list that the product sends; below the size at which malloc tidies up when it is
// freed.
constexpr std::size_t kFirstCapacity = 60000;

// The exponent of the smallest power of two of bytes that holds `value`.
unsigned widthExponent(std::uint64_t value) {
    return value > 0xFFFFFFFF ? 3 : value > 0xFFFF ? 2 : value > 0xFF ? 1 : 0;
}

}  // namespace

BinaryPlistWriter::BinaryPlistWriter(std::size_t referenceSize) : referenceSize_(referenceSize) {
    constexpr std::string_view kMagic = "bplist00";
    constexpr std::size_t kFirstObjects = 2048;
    offsets_.reserve(kFirstObjects);
    reserve(kFirstCapacity);
    std::memcpy(bytes_.get(), kMagic.data(), kMagic.size());
    size_ = kMagic.size();
}

void BinaryPlistWriter::grow(std::size_t bytes) {
    capacity_ = std::max(size_ + bytes, capacity_ * 2);
    auto larger = std::make_unique_for_overwrite<std::uint8_t[]>(capacity_);
    if (size_ > 0) {
        std::memcpy(larger.get(), bytes_.get(), size_);
    }
    bytes_ = std::move(larger);
}

void BinaryPlistWriter::putHeader(unsigned type, std::size_t count) {
    if (count < 15) {
        put(type | static_cast<unsigned>(count));
        return;
    }
    const unsigned exponent = widthExponent(count);
    put(type | 0xF);
    put(kInteger | exponent);
    putBigEndian(count, std::size_t{1} << exponent);
}

void BinaryPlistWriter::putReferences(std::span<const ObjectId> members) {
    std::uint8_t* at = bytes_.get() + size_;
    for (const ObjectId member : members) {
        if (referenceSize_ > 2) {
            *at++ = static_cast<std::uint8_t>(member >> 24);
            *at++ = static_cast<std::uint8_t>(member >> 16);
        }
        *at++ = static_cast<std::uint8_t>(member >> 8);
        *at++ = static_cast<std::uint8_t>(member);
    }
    size_ += referenceSize_ * members.size();
}

void BinaryPlistWriter::writeBool(ObjectId id, bool value) {
    reserve(1);
    begin(id);
    put(value ? 0x09 : 0x08);
}

void BinaryPlistWriter::writeInteger(ObjectId id, std::uint32_t value) {
    reserve(kHeaderCapacity);
    begin(id);
    const unsigned exponent = widthExponent(value);
    put(kInteger | exponent);
    putBigEndian(value, std::size_t{1} << exponent);
}

void BinaryPlistWriter::writeUID(ObjectId id, std::uint32_t value) {
    reserve(kHeaderCapacity);
    begin(id);
    if (value <= 0xFF) {
        put(kUID);
        put(value);
        return;
    }
    const std::size_t bytes = std::size_t{1} << widthExponent(value);
    put(kUID | static_cast<unsigned>(bytes - 1));
    putBigEndian(value, bytes);
}

void BinaryPlistWriter::writeText(ObjectId id, std::string_view text) {
    if (isASCII(text)) {
        reserve(kHeaderCapacity + text.size());
        begin(id);
        putHeader(kASCII, text.size());
        text.copy(reinterpret_cast<char*>(bytes_.get() + size_), text.size());
        size_ += text.size();
        return;
    }
    const std::u16string units = utf16FromUTF8(text);
    reserve(kHeaderCapacity + 2 * units.size());
    begin(id);
    putHeader(kUTF16, units.size());
    for (const char16_t unit : units) {
        putBigEndian(unit, 2);
    }
}

void BinaryPlistWriter::writeFileURL(ObjectId id, std::string_view path) {
    // The length is known only afterwards, so the text is written behind room for the largest header and
    // moved up.
    reserve(kHeaderCapacity + fileURLCapacity(path.size()));
    char* const text = reinterpret_cast<char*>(bytes_.get() + size_ + kHeaderCapacity);
    const auto length = static_cast<std::size_t>(Base::writeFileURL(text, path) - text);
    begin(id);
    putHeader(kASCII, length);
    std::memmove(bytes_.get() + size_, text, length);
    size_ += length;
}

void BinaryPlistWriter::writeArray(ObjectId id, std::span<const ObjectId> members) {
    reserve(kHeaderCapacity + referenceSize_ * members.size());
    begin(id);
    putHeader(kArray, members.size());
    putReferences(members);
}

void BinaryPlistWriter::writeDictionary(ObjectId id, std::span<const ObjectId> keys,
                                        std::span<const ObjectId> values) {
    reserve(kHeaderCapacity + 2 * referenceSize_ * keys.size());
    begin(id);
    putHeader(kDictionary, keys.size());
    putReferences(keys);
    putReferences(values);
}

std::vector<std::uint8_t> BinaryPlistWriter::finish(ObjectId top) {
    constexpr std::size_t kTrailerSize = 32;
    const std::uint64_t table = size_;
    const std::size_t offsetSize = std::size_t{1} << widthExponent(table);
    reserve(offsetSize * offsets_.size() + kTrailerSize);
    for (const std::uint64_t offset : offsets_) {
        putBigEndian(offset, offsetSize);
    }
    putBigEndian(0, 6);
    put(static_cast<unsigned>(offsetSize));
    put(static_cast<unsigned>(referenceSize_));
    putBigEndian(offsets_.size(), 8);
    putBigEndian(top, 8);
    putBigEndian(table, 8);
    return {bytes_.get(), bytes_.get() + size_};
}

}  // namespace Base
