#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Base/BinaryPlistReader.h"
#include "Base/ByteChunk.h"

namespace Base {

/// The key texts of a dictionary, in order.
class DictionaryShape {
  public:
    /// The largest dictionary that has a shape. No class of an archive has nearly as many keys.
    static constexpr std::size_t kMaxKeys = 16;
    static constexpr std::size_t kNowhere = SIZE_MAX;

    /// Whether `object` is a dictionary that is not too large to have one.
    [[nodiscard]] static bool has(const BinaryPlistReader::Object& object) {
        return object.type == BinaryPlistReader::Type::dictionary && object.count <= kMaxKeys;
    }
    /// `dictionary` has one.
    DictionaryShape(const BinaryPlistReader& plist, const BinaryPlistReader::Object& dictionary);

    /// The position of `key`, or `kNowhere`. Of a key that occurs twice the first one counts. `likely` is
    /// where to look first: keys are mostly asked for in the order in which they were written.
    [[nodiscard]] std::size_t find(std::string_view key, std::size_t likely = 0) const {
        return likely < count_ && sameText(text(likely), key) ? likely : search(key);
    }

    // Where the keys of the system's own classes are, found once for all objects of a shape.
    [[nodiscard]] std::size_t classPosition() const { return class_; }        // "$class"
    [[nodiscard]] std::size_t basePosition() const { return base_; }          // "NS.base"
    [[nodiscard]] std::size_t relativePosition() const { return relative_; }  // "NS.relative"

    /// Whether `dictionary` has this shape.
    [[nodiscard]] bool fits(const BinaryPlistReader& plist,
                            const BinaryPlistReader::Object& dictionary) const;

  private:
    // Left unset until it is needed: most of the room is never used.
    struct Key {
        const char* text;
        std::size_t size;
    };

    [[nodiscard]] std::string_view text(std::size_t position) const {
        return {keys_[position].text, keys_[position].size};
    }
    [[nodiscard]] std::size_t search(std::string_view key) const;

    const std::uint8_t* references_;
    std::size_t count_;
    std::size_t class_ = kNowhere;
    std::size_t base_ = kNowhere;
    std::size_t relative_ = kNowhere;
    std::array<Key, kMaxKeys> keys_;  // only `count_` of them are set; a repeated key is left empty
};

/// The shapes of an archive's dictionaries. Objects of one class list the same keys, so that a handful of
/// shapes serves a whole archive and each key's text is looked at once.
class DictionaryShapes {
  public:
    static constexpr std::uint8_t kNone = 0xFF;

    /// The index of the shape of `dictionary`, which has one; kept from now on if it is new.
    /// `kNone` when there are too many different ones to keep it.
    [[nodiscard]] std::uint8_t keep(const BinaryPlistReader& plist,
                                    const BinaryPlistReader::Object& dictionary);

    /// The shape at `index`; for `kNone` the shape is made in `scratch`.
    [[nodiscard]] const DictionaryShape& shape(const BinaryPlistReader& plist,
                                               const BinaryPlistReader::Object& dictionary,
                                               std::uint8_t index,
                                               std::unique_ptr<DictionaryShape>& scratch) const {
        if (index != kNone) {
            return shapes_[index];
        }
        scratch = std::make_unique<DictionaryShape>(plist, dictionary);
        return *scratch;
    }

  private:
    static constexpr std::size_t kMaxShapes = 32;

    std::vector<DictionaryShape> shapes_;
    std::array<std::uint8_t, 64> places_{};  // by a few bytes of the keys: index into `shapes_` plus 1
};

}  // namespace Base
