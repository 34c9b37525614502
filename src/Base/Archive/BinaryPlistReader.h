#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Archive/BinaryPlistFormat.h"

namespace Base {

/// A binary property list of any origin, read in place. BinaryPlistFormat.h describes the format.
///
/// `open` checks every offset, size, count and reference once and records the position of each object, in 16
/// bytes; nothing is parsed again after that. The sizes of all objects add up to no more than the file's, so
/// overlapping objects cannot stand for more than was sent. References may still form cycles: a caller
/// follows them only within a bound. The bytes have to outlive the reader.
class BinaryPlistReader {
  public:
    using ObjectId = BinaryPlist::ObjectId;

    enum class Type : std::uint8_t {
        damaged,
        null,
        boolean,
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

    struct Object {
        Type type;
        /// Members of an array, pairs of a dictionary, units of UTF-16 text; for all others, bytes of
        /// content.
        std::uint32_t count;
        /// The content after the marker and the count. For null and booleans, the marker itself.
        const std::uint8_t* content;
    };

    /// Returns nothing and sets `fault` to a few words if `bytes` violate the format anywhere.
    [[nodiscard]] static std::optional<BinaryPlistReader> open(std::span<const std::uint8_t> bytes,
                                                               std::string& fault);

    [[nodiscard]] ObjectId top() const { return top_; }

    /// The object with this id, which comes from `top` or from a reference. Never damaged.
    [[nodiscard]] const Object& object(ObjectId id) const { return objects_[id]; }
    /// Member `index` of an array; key `index` of a dictionary, whose values follow its keys.
    [[nodiscard]] ObjectId reference(const Object& container, std::size_t index) const {
        return static_cast<ObjectId>(number(container.content + index * referenceSize_, referenceSize_));
    }
    /// The value under the ASCII text `key`, the first one if the key is repeated. Searches the keys
    /// linearly.
    [[nodiscard]] std::optional<ObjectId> value(const Object& dictionary, std::string_view key) const;

    /// The value of a boolean; nothing for any other object.
    [[nodiscard]] static std::optional<bool> boolean(const Object& object);
    /// The value of an unsigned integer of up to 8 bytes; nothing for any other object.
    [[nodiscard]] static std::optional<std::uint64_t> integer(const Object& object);
    /// The value of a UID; nothing for any other object.
    [[nodiscard]] static std::optional<std::uint64_t> uid(const Object& object) {
        return object.type == Type::uid ? std::optional(number(object.content, object.count)) : std::nullopt;
    }
    [[nodiscard]] static bool isText(const Object& object) {
        return object.type == Type::ascii || object.type == Type::utf16;
    }
    /// The bytes of an ASCII string, which may not be ASCII; empty for any other object.
    [[nodiscard]] static std::string_view asciiText(const Object& object);

  private:
    BinaryPlistReader() = default;

    // The big-endian number in `width` bytes, 8 at most.
    static std::uint64_t number(const std::uint8_t* bytes, std::size_t width) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < width; ++i) {
            value = value << 8 | bytes[i];
        }
        return value;
    }
    // What an object states about itself before its content.
    struct Header {
        Type type;
        std::size_t size;     // of the marker and the count
        std::uint64_t count;  // not yet validated
    };
    // `room` extends from the marker to the end of all objects.
    static Header headerOf(std::span<const std::uint8_t> room);

    bool readTrailer(std::string& fault);
    bool readObjects(std::string& fault);
    // The object at `offset`, which lies before the offset table; damaged unless the whole object does.
    [[nodiscard]] Object objectAt(std::uint64_t offset) const;
    // The number of bytes per unit of a type's count.
    [[nodiscard]] std::size_t unitSize(Type type) const;
    [[nodiscard]] bool checkReferences(const Object& object) const;

    std::span<const std::uint8_t> bytes_;
    std::size_t tableOffset_ = 0;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::size_t objectCount_ = 0;
    ObjectId top_ = 0;
    std::vector<Object> objects_;
};

}  // namespace Base
