#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Base {

/// A binary property list ("bplist00") of any origin, read in place.
///
/// `open` goes once over all objects and checks every offset, size, count and reference; afterwards any
/// object can be looked at without further checks. The objects' sizes together may not exceed the file's, so
/// that nothing is larger than what was sent, whatever overlaps. References may still form cycles: a reader
/// must not follow them without a bound of its own. The bytes have to outlive the reader.
class BinaryPlistReader {
  public:
    using ObjectId = std::uint32_t;

    /// The kinds of object; those from `data` on have a count.
    enum class Type : std::uint8_t {
        damaged,
        simple,
        integer,
        real,
        date,
        uid,
        data,
        ascii,
        utf16,
        array,
        dictionary
    };

    /// One object, taken apart.
    struct Object {
        Type type;
        /// Number of members, characters, UTF-16 units or bytes; for a simple object its code (see
        /// `boolean`).
        std::size_t count;
        const std::uint8_t* content;
    };

    /// Returns nothing and sets `fault` to a few words when anything in `bytes` is not as it should be.
    [[nodiscard]] static std::optional<BinaryPlistReader> open(std::span<const std::uint8_t> bytes,
                                                               std::string& fault);

    [[nodiscard]] ObjectId top() const { return top_; }
    [[nodiscard]] std::size_t referenceSize() const { return referenceSize_; }

    /// The object with this id, which comes from `top` or from a reference.
    [[nodiscard]] Object object(ObjectId id) const {
        const std::uint8_t* const bytes = bytesOf(id);
        const Type type = typeOf(bytes[0]);
        const std::size_t low = bytes[0] & 0xF;
        if (type >= Type::data && low == 0xF) {
            const std::size_t width = std::size_t{1} << (bytes[1] & 0xF);
            return {type, static_cast<std::size_t>(bigEndian(bytes + 2, width)), bytes + 2 + width};
        }
        const bool isNumber = type >= Type::integer && type <= Type::date;
        return {type, isNumber ? std::size_t{1} << low : low, bytes + 1};
    }
    /// The value of the object with this id if it is a UID.
    [[nodiscard]] std::optional<std::uint64_t> uid(ObjectId id) const {
        const std::uint8_t* const bytes = bytesOf(id);
        if (typeOf(bytes[0]) != Type::uid) {
            return std::nullopt;
        }
        const unsigned width = (bytes[0] & 0xFU) + 1;
        if (width > 4) {
            return wideBigEndian(bytes + 1, width);
        }
        // Without a branch on the width; the trailer keeps the four bytes inside of the file.
        const std::uint32_t word =
            static_cast<std::uint32_t>(bytes[1]) << 24 | bytes[2] << 16 | bytes[3] << 8 | bytes[4];
        return word >> (32 - 8 * width);
    }
    /// Member `index` of an array; key `index` of a dictionary, whose values follow its keys.
    [[nodiscard]] ObjectId reference(const Object& container, std::size_t index) const {
        return static_cast<ObjectId>(bigEndian(container.content + index * referenceSize_, referenceSize_));
    }

    /// The value of a boolean; nothing for every other object.
    [[nodiscard]] static std::optional<bool> boolean(const Object& object);
    /// The value of an integer of up to 8 bytes; nothing for every other object.
    [[nodiscard]] static std::optional<std::uint64_t> integer(const Object& object);
    [[nodiscard]] static bool isText(const Object& object) {
        return object.type == Type::ascii || object.type == Type::utf16;
    }
    /// The characters of an ASCII string, unchecked; empty for every other object.
    [[nodiscard]] static std::string_view asciiText(const Object& object) {
        return object.type == Type::ascii
                   ? std::string_view(reinterpret_cast<const char*>(object.content), object.count)
                   : std::string_view();
    }

  private:
    BinaryPlistReader() = default;

    // Nearly all numbers of a list take one or two bytes.
    static std::uint64_t bigEndian(const std::uint8_t* bytes, std::size_t count) {
        if (count == 2) {
            return static_cast<std::uint64_t>(bytes[0] << 8 | bytes[1]);
        }
        return count == 1 ? bytes[0] : wideBigEndian(bytes, count);
    }
    static std::uint64_t wideBigEndian(const std::uint8_t* bytes, std::size_t count);
    // By the upper half of an object's first byte.
    static constexpr std::array<Type, 16> kTypes{
        Type::simple,  Type::integer,    Type::real,    Type::date,    Type::data,  Type::ascii,
        Type::utf16,   Type::damaged,    Type::uid,     Type::damaged, Type::array, Type::damaged,
        Type::damaged, Type::dictionary, Type::damaged, Type::damaged};
    static Type typeOf(std::uint8_t first) { return kTypes[first >> 4]; }
    [[nodiscard]] const std::uint8_t* bytesOf(ObjectId id) const {
        return bytes_.data() + bigEndian(bytes_.data() + tableOffset_ + id * offsetSize_, offsetSize_);
    }
    bool readTrailer(std::string& fault);
    // For tables whose offsets and references both take `width` bytes; 0 stands for any widths.
    template <std::size_t width>
    [[nodiscard]] bool checkObjects(std::string& fault) const;
    // The size of an object and the number of references at its end; a size of 0 for a damaged one.
    struct Measured {
        std::uint64_t size;
        std::uint64_t references;
    };
    // For the object at `bytes`, which has `room` bytes at most. The second one is for counts of their own.
    [[nodiscard]] Measured measure(const std::uint8_t* bytes, std::uint64_t room) const;
    [[nodiscard]] Measured measureCounted(const std::uint8_t* bytes, std::uint64_t room) const;
    template <std::size_t width>
    [[nodiscard]] bool referencesInRange(const std::uint8_t* references, std::uint64_t count) const;

    std::span<const std::uint8_t> bytes_;
    std::size_t tableOffset_ = 0;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::size_t objectCount_ = 0;
    ObjectId top_ = 0;
};

}  // namespace Base
