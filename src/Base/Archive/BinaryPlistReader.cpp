#include "Base/Archive/BinaryPlistReader.h"

#include <limits>

namespace Base {
namespace {

using namespace BinaryPlist;

using Object = BinaryPlistReader::Object;
using Type = BinaryPlistReader::Type;
using Bytes = std::span<const std::uint8_t>;

constexpr unsigned kindOf(std::uint8_t marker) {
    return marker & 0xF0U;
}

constexpr unsigned lowerHalf(std::uint8_t marker) {
    return marker & 0x0FU;
}

// The type of the object with this marker; damaged for a marker that the format does not have.
Type typeOf(std::uint8_t marker) {
    const unsigned n = lowerHalf(marker);
    switch (kindOf(marker)) {
        case kSimple:
            return n == kNull ? Type::null : n == kFalse || n == kTrue ? Type::boolean : Type::damaged;
        case kInteger:
            return n <= 4 ? Type::integer : Type::damaged;
        case kReal:
            return n == 2 || n == 3 ? Type::real : Type::damaged;
        case kDate:
            return n == 3 ? Type::date : Type::damaged;
        case kUID:
            return n < 8 ? Type::uid : Type::damaged;
        case kData:
            return Type::data;
        case kASCII:
            return Type::ascii;
        case kUTF16:
            return Type::utf16;
        case kArray:
            return Type::array;
        case kDictionary:
            return Type::dictionary;
        default:
            return Type::damaged;
    }
}

}  // namespace

std::optional<BinaryPlistReader> BinaryPlistReader::open(Bytes bytes, std::string& fault) {
    BinaryPlistReader reader;
    reader.bytes_ = bytes;
    if (!reader.readTrailer(fault) || !reader.readObjects(fault)) {
        return std::nullopt;
    }
    return reader;
}

bool BinaryPlistReader::readTrailer(std::string& fault) {
    const std::string_view text(reinterpret_cast<const char*>(bytes_.data()), bytes_.size());
    // Ids and counts are kept in 32 bits.
    if (!text.starts_with(kSignature) || text.size() < kSignature.size() + kTrailerSize ||
        text.size() > std::numeric_limits<std::uint32_t>::max()) {
        fault = "missing bplist00 signature, or impossible file size";
        return false;
    }
    const std::uint64_t tableEnd = bytes_.size() - kTrailerSize;
    const std::uint8_t* const trailer = bytes_.data() + tableEnd;
    offsetSize_ = trailer[6];
    referenceSize_ = trailer[7];
    const std::uint64_t objectCount = number(trailer + 8, 8);
    const std::uint64_t top = number(trailer + 16, 8);
    const std::uint64_t table = number(trailer + 24, 8);
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) {
        fault = "its trailer names an impossible width";
        return false;
    }
    // A division, because the count may be anything and its product could overflow.
    if (table < kSignature.size() || table > tableEnd || objectCount != (tableEnd - table) / offsetSize_ ||
        (tableEnd - table) % offsetSize_ != 0) {
        fault = "its offset table does not fit the file";
        return false;
    }
    if (top >= objectCount) {
        fault = "its top object does not exist";
        return false;
    }
    objectCount_ = static_cast<std::size_t>(objectCount);
    top_ = static_cast<ObjectId>(top);
    tableOffset_ = static_cast<std::size_t>(table);
    return true;
}

bool BinaryPlistReader::readObjects(std::string& fault) {
    std::uint64_t unclaimed = tableOffset_ - kSignature.size();
    // Every object takes at least one byte, so this refuses a huge table before it is read.
    if (objectCount_ > unclaimed) {
        fault = "it has more objects than bytes";
        return false;
    }
    objects_.reserve(objectCount_);
    const std::uint8_t* const table = bytes_.data() + tableOffset_;
    for (std::size_t id = 0; id < objectCount_; ++id) {
        const std::uint64_t offset = number(table + id * offsetSize_, offsetSize_);
        if (offset < kSignature.size() || offset >= tableOffset_) {
            fault = "the offset of object " + std::to_string(id) + " is out of range";
            return false;
        }
        const Object object = objectAt(offset);
        if (object.type == Type::damaged) {
            fault = "object " + std::to_string(id) + " is damaged";
            return false;
        }
        const std::uint8_t* const end = object.content + object.count * unitSize(object.type);
        const auto size = static_cast<std::uint64_t>(end - (bytes_.data() + offset));
        if (size > unclaimed) {
            fault = "its objects overlap";
            return false;
        }
        unclaimed -= size;
        if (!checkReferences(object)) {
            fault = "object " + std::to_string(id) + " refers to an object that does not exist";
            return false;
        }
        objects_.push_back(object);
    }
    return true;
}

BinaryPlistReader::Header BinaryPlistReader::headerOf(Bytes room) {
    constexpr Header kDamaged{Type::damaged, 0, 0};
    const Type type = typeOf(room[0]);
    const unsigned n = lowerHalf(room[0]);
    if (type == Type::null || type == Type::boolean) {
        return {type, 0, 1};  // the marker is the content
    }
    if (type == Type::integer || type == Type::real || type == Type::date) {
        return {type, 1, std::uint64_t{1} << n};
    }
    if (type == Type::uid) {
        return {type, 1, n + std::uint64_t{1}};
    }
    if (type == Type::damaged || n != kCountFollows) {
        return {type, 1, n};
    }
    if (room.size() < 2 || kindOf(room[1]) != kInteger || lowerHalf(room[1]) > 3) {
        return kDamaged;
    }
    const std::size_t width = std::size_t{1} << lowerHalf(room[1]);
    if (room.size() < 2 + width) {
        return kDamaged;
    }
    return {type, 2 + width, number(room.data() + 2, width)};
}

Object BinaryPlistReader::objectAt(std::uint64_t offset) const {
    const Bytes room = bytes_.first(tableOffset_).subspan(static_cast<std::size_t>(offset));
    const Header header = headerOf(room);
    // The count may be anything; the first comparison keeps the product from overflowing.
    if (header.type == Type::damaged || header.count > room.size() ||
        header.count * unitSize(header.type) > room.size() - header.size) {
        return {Type::damaged, 0, nullptr};
    }
    return {header.type, static_cast<std::uint32_t>(header.count), room.data() + header.size};
}

std::size_t BinaryPlistReader::unitSize(Type type) const {
    return type == Type::utf16        ? 2
           : type == Type::array      ? referenceSize_
           : type == Type::dictionary ? 2 * referenceSize_
                                      : 1;
}

bool BinaryPlistReader::checkReferences(const Object& object) const {
    const std::size_t count = object.type == Type::array        ? object.count
                              : object.type == Type::dictionary ? std::size_t{2} * object.count
                                                                : 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (number(object.content + i * referenceSize_, referenceSize_) >= objectCount_) {
            return false;
        }
    }
    return true;
}

std::optional<BinaryPlistReader::ObjectId> BinaryPlistReader::value(const Object& dictionary,
                                                                    std::string_view key) const {
    for (std::size_t i = 0; i < dictionary.count; ++i) {
        const Object& each = object(reference(dictionary, i));
        if (each.type == Type::ascii && asciiText(each) == key) {
            return reference(dictionary, dictionary.count + i);
        }
    }
    return std::nullopt;
}

std::optional<bool> BinaryPlistReader::boolean(const Object& object) {
    return object.type == Type::boolean ? std::optional(*object.content == kTrue) : std::nullopt;
}

std::optional<std::uint64_t> BinaryPlistReader::integer(const Object& object) {
    return object.type == Type::integer && object.count <= 8
               ? std::optional(number(object.content, object.count))
               : std::nullopt;
}

std::string_view BinaryPlistReader::asciiText(const Object& object) {
    return object.type == Type::ascii
               ? std::string_view(reinterpret_cast<const char*>(object.content), object.count)
               : std::string_view();
}

}  // namespace Base
