#include "Base/Archive/BinaryPlistWriter.h"

#include <algorithm>
#include <string>
#include <utility>

#include "Base/UTF16.h"
#include "Base/UTF8.h"

namespace Base {
namespace {

using namespace BinaryPlist;

// The base-2 logarithm of the width in bytes that holds `value`.
unsigned widthExponent(std::uint64_t value) {
    return value > 0xFFFFFFFF ? 3 : value > 0xFFFF ? 2 : value > 0xFF ? 1 : 0;
}

std::size_t widthOf(std::uint64_t value) {
    return std::size_t{1} << widthExponent(value);
}

}  // namespace

BinaryPlistWriter::BinaryPlistWriter(std::size_t referenceSize) : referenceSize_(referenceSize) {
    // Room for the largest list that the product sends.
    constexpr std::size_t kUsualBytes = 32768;
    constexpr std::size_t kUsualObjects = 2048;
    bytes_.resize(kUsualBytes);
    offsets_.reserve(kUsualObjects);
    std::copy(kSignature.begin(), kSignature.end(), claim(kSignature.size()));
}

void BinaryPlistWriter::putInteger(std::uint64_t value) {
    put(kInteger | widthExponent(value));
    putNumber(value, widthOf(value));
}

void BinaryPlistWriter::putMarker(unsigned kind, std::size_t count) {
    if (count < kCountFollows) {
        put(kind | static_cast<unsigned>(count));
        return;
    }
    put(kind | kCountFollows);
    putInteger(count);
}

BinaryPlistWriter::ObjectId BinaryPlistWriter::newObject() {
    offsets_.push_back(0);
    return static_cast<ObjectId>(offsets_.size() - 1);
}

bool BinaryPlistWriter::overflowed() const {
    return offsets_.size() > std::uint64_t{1} << 8 * referenceSize_;
}

void BinaryPlistWriter::writeBool(ObjectId id, bool value) {
    begin(id);
    put(value ? kTrue : kFalse);
}

void BinaryPlistWriter::writeInteger(ObjectId id, std::uint32_t value) {
    begin(id);
    putInteger(value);
}

void BinaryPlistWriter::writeUID(ObjectId id, std::uint32_t value) {
    begin(id);
    const std::size_t width = widthOf(value);
    put(kUID | static_cast<unsigned>(width - 1));
    putNumber(value, width);
}

void BinaryPlistWriter::writeText(ObjectId id, std::string_view text) {
    begin(id);
    if (isASCII(text)) {
        putMarker(kASCII, text.size());
        text.copy(reinterpret_cast<char*>(claim(text.size())), text.size());
        return;
    }
    const std::u16string units = utf16FromUTF8(text);
    putMarker(kUTF16, units.size());
    for (const char16_t unit : units) {
        putNumber(unit, 2);
    }
}

void BinaryPlistWriter::writeArray(ObjectId id, std::span<const ObjectId> members) {
    begin(id);
    putMarker(kArray, members.size());
    for (const ObjectId member : members) {
        putNumber(member, referenceSize_);
    }
}

void BinaryPlistWriter::writeDictionary(ObjectId id, std::span<const Pair> pairs) {
    begin(id);
    putMarker(kDictionary, pairs.size());
    for (const Pair& pair : pairs) {
        putNumber(pair.key, referenceSize_);
    }
    for (const Pair& pair : pairs) {
        putNumber(pair.value, referenceSize_);
    }
}

std::vector<std::uint8_t> BinaryPlistWriter::finish(ObjectId top) {
    const std::uint64_t table = size_;
    const std::size_t offsetSize = widthOf(table);
    for (const std::uint64_t offset : offsets_) {
        putNumber(offset, offsetSize);
    }
    putNumber(0, 6);
    putNumber(offsetSize, 1);
    putNumber(referenceSize_, 1);
    putNumber(offsets_.size(), 8);
    putNumber(top, 8);
    putNumber(table, 8);
    bytes_.resize(size_);
    return std::move(bytes_);
}

}  // namespace Base
