#include "Base/BinaryPlistReader.h"

#include <cstring>
#include <limits>

namespace Base {
namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr std::uint64_t kDamaged = 0;

// Simple objects, by the lower half of their byte.
constexpr std::size_t kNull = 0x0;
constexpr std::size_t kFalse = 0x8;
constexpr std::size_t kTrue = 0x9;

}  // namespace

template <std::size_t width>
bool BinaryPlistReader::referencesInRange(const std::uint8_t* references, std::uint64_t count) const {
    const std::size_t size = width != 0 ? width : referenceSize_;
    for (; count > 0; --count, references += size) {
        if (bigEndian(references, size) >= objectCount_) {
            return false;
        }
    }
    return true;
}

template <std::size_t width>
bool BinaryPlistReader::checkObjects(std::string& fault) {
    const std::size_t offsetSize = width != 0 ? width : offsetSize_;
    const std::size_t referenceSize = width != 0 ? width : referenceSize_;
    // Every object takes a byte at least, so an honest table is never longer than what it describes.
    std::uint64_t left = tableOffset_ - kMagic.size();
    if (objectCount_ > left) {
        fault = "it names more objects than it has bytes";
        return false;
    }
    offsets_ = std::make_unique_for_overwrite<std::uint32_t[]>(objectCount_);
    const std::uint8_t* entry = bytes_.data() + tableOffset_;
    for (std::size_t id = 0; id < objectCount_; ++id, entry += offsetSize) {
        const std::uint64_t offset = bigEndian(entry, offsetSize);
        if (offset < kMagic.size() || offset >= tableOffset_) {
            fault = "the offset of object " + std::to_string(id) + " lies outside";
            return false;
        }
        const Measured measured = measure(offset);
        if (measured.size == kDamaged) {
            fault = "object " + std::to_string(id) + " is damaged";
            return false;
        }
        if (measured.size > left) {
            fault = "its objects overlap";
            return false;
        }
        left -= measured.size;
        offsets_[id] = static_cast<std::uint32_t>(offset);
        const std::uint8_t* const end = bytes_.data() + offset + measured.size;
        if (!referencesInRange<width>(end - measured.references * referenceSize, measured.references)) {
            fault = "object " + std::to_string(id) + " refers to one that does not exist";
            return false;
        }
    }
    return true;
}

std::optional<BinaryPlistReader> BinaryPlistReader::open(std::span<const std::uint8_t> bytes, std::string& fault) {
    BinaryPlistReader reader;
    reader.bytes_ = bytes;
    if (!reader.readTrailer(fault)) {
        return std::nullopt;
    }
    // Lists of a usual size have these widths; knowing them makes the check several times as fast.
    constexpr std::size_t kUsual = 2;
    const bool isUsual = reader.offsetSize_ == kUsual && reader.referenceSize_ == kUsual;
    if (!(isUsual ? reader.checkObjects<kUsual>(fault) : reader.checkObjects<0>(fault))) {
        return std::nullopt;
    }
    return reader;
}

bool BinaryPlistReader::readTrailer(std::string& fault) {
    // Offsets are kept in 32 bits.
    if (bytes_.size() < kMagic.size() + kTrailerSize || bytes_.size() > std::numeric_limits<std::uint32_t>::max() ||
        std::memcmp(bytes_.data(), kMagic.data(), kMagic.size()) != 0) {
        fault = "its first bytes or its size say that it is none";
        return false;
    }
    const std::uint8_t* const trailer = bytes_.data() + bytes_.size() - kTrailerSize;
    offsetSize_ = trailer[6];
    referenceSize_ = trailer[7];
    const std::uint64_t objectCount = bigEndian(trailer + 8, 8);
    const std::uint64_t top = bigEndian(trailer + 16, 8);
    const std::uint64_t table = bigEndian(trailer + 24, 8);
    const std::uint64_t tableEnd = bytes_.size() - kTrailerSize;
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) {
        fault = "its trailer names an impossible width";
        return false;
    }
    if (table < kMagic.size() || table > tableEnd || objectCount != (tableEnd - table) / offsetSize_ ||
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

BinaryPlistReader::Measured BinaryPlistReader::measure(std::uint64_t offset) const {
    const std::uint64_t room = tableOffset_ - offset;
    const std::uint8_t* const bytes = bytes_.data() + offset;
    const Type type = typeOf(bytes[0]);
    if (type >= Type::data) {
        return measureCounted(type, bytes, room);
    }
    const unsigned low = bytes[0] & 0xF;
    std::uint64_t size = kDamaged;
    switch (type) {
        case Type::uid:
            size = low < 8 ? 2 + low : kDamaged;
            break;
        case Type::simple:
            size = low == kNull || low == kFalse || low == kTrue ? 1 : kDamaged;
            break;
        case Type::integer:
            size = low <= 4 ? 1 + (std::uint64_t{1} << low) : kDamaged;
            break;
        case Type::real:
            size = low == 2 || low == 3 ? 1 + (std::uint64_t{1} << low) : kDamaged;
            break;
        case Type::date:
            size = low == 3 ? 9 : kDamaged;
            break;
        default:
            break;
    }
    return {size <= room ? size : kDamaged, 0};
}

BinaryPlistReader::Measured BinaryPlistReader::measureCounted(Type type, const std::uint8_t* bytes,
                                                              std::uint64_t room) const {
    std::uint64_t count = bytes[0] & 0xF;
    std::uint64_t header = 1;
    if (count == 0xF) {
        // The count is an integer object of its own.
        if (room < 2 || typeOf(bytes[1]) != Type::integer || (bytes[1] & 0xF) > 3) {
            return {kDamaged, 0};
        }
        const std::size_t width = std::size_t{1} << (bytes[1] & 0xF);
        header = 2 + width;
        if (room < header) {
            return {kDamaged, 0};
        }
        count = bigEndian(bytes + 2, width);
    }
    if (count > room) {
        return {kDamaged, 0};  // this also keeps the products below from overflowing
    }
    std::uint64_t references = 0;
    std::uint64_t content = count;
    if (type == Type::utf16) {
        content = 2 * count;
    } else if (type == Type::array || type == Type::dictionary) {
        references = type == Type::array ? count : 2 * count;
        content = references * referenceSize_;
    }
    return {header + content <= room ? header + content : kDamaged, references};
}

std::uint64_t BinaryPlistReader::wideBigEndian(const std::uint8_t* bytes, std::size_t count) {
    std::uint64_t value = bytes[0];
    for (std::size_t i = 1; i < count; ++i) {
        value = value << 8 | bytes[i];
    }
    return value;
}

BinaryPlistReader::Object BinaryPlistReader::takeApart(const std::uint8_t* bytes) {
    const Type type = typeOf(bytes[0]);
    const std::size_t low = bytes[0] & 0xF;
    if (type >= Type::data) {
        if (low < 0xF) {
            return {type, low, bytes + 1};
        }
        const std::size_t width = std::size_t{1} << (bytes[1] & 0xF);
        return {type, static_cast<std::size_t>(bigEndian(bytes + 2, width)), bytes + 2 + width};
    }
    if (type == Type::simple) {
        return {type, low, bytes + 1};
    }
    return {type, type == Type::uid ? low + 1 : std::size_t{1} << low, bytes + 1};
}

std::optional<bool> BinaryPlistReader::boolean(const Object& object) {
    if (object.type != Type::simple || object.count == kNull) {
        return std::nullopt;
    }
    return object.count == kTrue;
}

std::optional<std::uint64_t> BinaryPlistReader::integer(const Object& object) {
    if (object.type != Type::integer || object.count > 8) {
        return std::nullopt;
    }
    return bigEndian(object.content, object.count);
}

}  // namespace Base
