#include "Base/BinaryPlistReader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>

#include "Base/ByteChunk.h"

namespace Base {
namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr std::uint64_t kDamaged = 0;

// Simple objects, by the lower half of their byte.
constexpr std::size_t kNull = 0x0;
constexpr std::size_t kFalse = 0x8;
constexpr std::size_t kTrue = 0x9;

// What the first byte of an object says of its size: some bytes, and some references. No bytes: it is
// damaged, or its count follows.
struct FirstByte {
    std::uint8_t bytes;
    std::uint8_t references;
};

constexpr FirstByte firstByte(unsigned byte) {
    const unsigned low = byte & 0xF;
    const auto sized = [](bool isSound, unsigned bytes) {
        return FirstByte{static_cast<std::uint8_t>(isSound ? bytes : 0), 0};
    };
    const auto counted = [low](unsigned bytes, unsigned references) {
        return low == 0xF ? FirstByte{0, 0}
                          : FirstByte{static_cast<std::uint8_t>(1 + low * bytes),
                                      static_cast<std::uint8_t>(low * references)};
    };
    switch (byte >> 4) {
        case 0x0:
            return sized(low == kNull || low == kFalse || low == kTrue, 1);
        case 0x1:  // integers
            return sized(low <= 4, 1 + (1U << (low & 7)));
        case 0x2:  // reals
            return sized(low == 2 || low == 3, 1 + (1U << (low & 7)));
        case 0x3:  // dates
            return sized(low == 3, 9);
        case 0x8:  // UIDs
            return sized(low < 8, 2 + low);
        case 0x4:  // data
        case 0x5:  // ASCII
            return counted(1, 0);
        case 0x6:  // UTF-16
            return counted(2, 0);
        case 0xA:  // arrays
            return counted(0, 1);
        case 0xD:  // dictionaries
            return counted(0, 2);
        default:
            return FirstByte{0, 0};
    }
}

constexpr std::array<FirstByte, 256> kFirstBytes = [] {
    std::array<FirstByte, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        table[byte] = firstByte(byte);
    }
    return table;
}();

// Whether each of `count` numbers of two bytes is below `limit`, eight at a time. Reads up to 14 bytes past
// them, which the trailer has.
bool pairsBelow(const std::uint8_t* numbers, std::uint64_t count, std::uint64_t limit) {
    using Pairs [[gnu::vector_size(16)]] = std::uint16_t;
    constexpr std::uint64_t kLanes = 8;
    constexpr Pairs kLane{0, 1, 2, 3, 4, 5, 6, 7};
    if (limit > 0xFFFF) {
        return true;
    }
    const auto narrowLimit = static_cast<std::uint16_t>(limit);
    const Pairs limits = Pairs{} + narrowLimit;
    for (std::uint64_t done = 0; done < count; done += kLanes) {
        const auto stored = reinterpret_cast<Pairs>(loadChunk(numbers + 2 * done));
        const Pairs values = std::endian::native == std::endian::little ? stored << 8 | stored >> 8 : stored;
        const auto left = static_cast<std::uint16_t>(std::min(count - done, kLanes));
        const Pairs wanted = Pairs{} + left;
        if (anySet(reinterpret_cast<ByteChunk>((values >= limits) & (kLane < wanted)))) {
            return false;
        }
    }
    return true;
}

}  // namespace

template <std::size_t width>
bool BinaryPlistReader::referencesInRange(const std::uint8_t* references, std::uint64_t count) const {
    if constexpr (width == 2) {
        return pairsBelow(references, count, objectCount_);
    }
    for (; count > 0; --count, references += referenceSize_) {
        if (bigEndian(references, referenceSize_) >= objectCount_) {
            return false;
        }
    }
    return true;
}

template <std::size_t width>
bool BinaryPlistReader::checkObjects(std::string& fault) const {
    const std::size_t offsetSize = width != 0 ? width : offsetSize_;
    const std::size_t referenceSize = width != 0 ? width : referenceSize_;
    // Every object takes a byte at least, so an honest table is never longer than what it describes.
    std::uint64_t left = tableOffset_ - kMagic.size();
    if (objectCount_ > left) {
        fault = "it names more objects than it has bytes";
        return false;
    }
    const std::uint8_t* entry = bytes_.data() + tableOffset_;
    for (std::size_t id = 0; id < objectCount_; ++id, entry += offsetSize) {
        const std::uint64_t offset = bigEndian(entry, offsetSize);
        if (offset < kMagic.size() || offset >= tableOffset_) {
            fault = "the offset of object " + std::to_string(id) + " lies outside";
            return false;
        }
        const Measured measured = measure(bytes_.data() + offset, tableOffset_ - offset);
        if (measured.size == kDamaged) {
            fault = "object " + std::to_string(id) + " is damaged";
            return false;
        }
        if (measured.size > left) {
            fault = "its objects overlap";
            return false;
        }
        left -= measured.size;
        const std::uint8_t* const end = bytes_.data() + offset + measured.size;
        if (!referencesInRange<width>(end - measured.references * referenceSize, measured.references)) {
            fault = "object " + std::to_string(id) + " refers to one that does not exist";
            return false;
        }
    }
    return true;
}

std::optional<BinaryPlistReader> BinaryPlistReader::open(std::span<const std::uint8_t> bytes,
                                                         std::string& fault) {
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
    // Ids are kept in 32 bits.
    if (bytes_.size() < kMagic.size() + kTrailerSize ||
        bytes_.size() > std::numeric_limits<std::uint32_t>::max() ||
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

BinaryPlistReader::Measured BinaryPlistReader::measure(const std::uint8_t* bytes, std::uint64_t room) const {
    const FirstByte first = kFirstBytes[bytes[0]];
    if (first.bytes + first.references == 0) {
        return measureCounted(bytes, room);
    }
    const std::uint64_t size = first.bytes + first.references * referenceSize_;
    return {size <= room ? size : kDamaged, first.references};
}

BinaryPlistReader::Measured BinaryPlistReader::measureCounted(const std::uint8_t* bytes,
                                                              std::uint64_t room) const {
    // The count is an integer object of its own.
    const Type type = typeOf(bytes[0]);
    if (type < Type::data || (bytes[0] & 0xF) != 0xF || room < 2 || typeOf(bytes[1]) != Type::integer ||
        (bytes[1] & 0xF) > 3) {
        return {kDamaged, 0};
    }
    const std::size_t width = std::size_t{1} << (bytes[1] & 0xF);
    const std::uint64_t header = 2 + width;
    if (room < header) {
        return {kDamaged, 0};
    }
    const std::uint64_t count = bigEndian(bytes + 2, width);
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
