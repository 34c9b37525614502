#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/BinaryPlistReader.h"
#include "Base/DictionaryShape.h"
#include "Base/KeyedUnarchiver.h"

namespace Base {

/// The "$objects" of a keyed archive, all of known and allowed classes.
///
/// `open` checks the archive's frame and looks at every entry once; work and memory are linear in the
/// archive's size. What the entries refer to is not followed here.
class ArchiveObjects {
  public:
    enum class Kind : std::uint8_t {
        unknown,
        nil,
        string,
        wrappedString,  // an object with "NS.string"
        boolean,
        number,
        array,
        url,
        otherValue,  // of an allowed class that this room does not read
        object,      // of the allowed coded class at `classIndex`
        classDescription,
    };

    struct Entry {
        BinaryPlistReader::ObjectId id;
        Kind kind;
        std::uint8_t shape;        // see `shape`
        std::uint16_t classIndex;  // for a classDescription: its place in the list of classes met
    };

    /// Returns nothing and sets `refusal` when the archive is not one, or holds anything that `allowed` does
    /// not list.
    [[nodiscard]] static std::optional<ArchiveObjects> open(std::span<const std::uint8_t> archive,
                                                            const AllowedClasses& allowed,
                                                            const UnarchivingLimits& limits,
                                                            std::string& refusal);

    [[nodiscard]] const BinaryPlistReader& plist() const { return plist_; }
    [[nodiscard]] const Entry& root() const { return entries_[root_]; }
    /// The entry that stands for nil.
    [[nodiscard]] const Entry* nil() const { return entries_.data(); }
    /// The entry that the UID object `id` refers to; null when `id` is no UID or points outside.
    [[nodiscard]] const Entry* target(BinaryPlistReader::ObjectId id) const {
        const auto index = plist_.uid(id);
        return index && *index < entries_.size() ? &entries_[static_cast<std::size_t>(*index)] : nullptr;
    }
    /// The shape of an entry that is a dictionary; `scratch` is used when none is kept.
    [[nodiscard]] const DictionaryShape& shape(const Entry& entry,
                                               const BinaryPlistReader::Object& dictionary,
                                               std::unique_ptr<DictionaryShape>& scratch) const {
        return shapes_.shape(plist_, dictionary, entry.shape, scratch);
    }

  private:
    // A class that an archive describes, as the entries of that class will have it.
    struct Class {
        Kind kind;
        std::uint16_t classIndex;
    };

    ArchiveObjects(const BinaryPlistReader& plist, const AllowedClasses& allowed)
        : plist_(plist), allowed_(allowed), allowsStrings_(allowsValue("NSString")) {}

    bool readFrame(const UnarchivingLimits& limits, std::string& refusal);
    bool readTop(const std::optional<BinaryPlistReader::Object>& top, std::string& refusal);
    bool readEntries(std::string& refusal);
    bool readEntry(std::size_t index, std::string& refusal);
    bool readPlainValue(Entry& entry, const BinaryPlistReader::Object& object, std::size_t index,
                        std::string& refusal) const;
    bool readDictionary(std::size_t index, const BinaryPlistReader::Object& dictionary, std::string& refusal);
    const Class* classDescribed(std::size_t index, std::string& refusal);
    bool readClass(std::size_t index, Class& described, std::string& refusal);
    [[nodiscard]] bool classesAgree(const BinaryPlistReader::Object& list, std::string_view name) const;
    [[nodiscard]] std::optional<Class> allowedClass(std::string_view name) const;
    [[nodiscard]] bool allowsValue(std::string_view name) const;
    [[nodiscard]] std::optional<BinaryPlistReader::Object> value(const BinaryPlistReader::Object& dictionary,
                                                                 const DictionaryShape& shape,
                                                                 std::string_view key) const;

    BinaryPlistReader plist_;
    AllowedClasses allowed_;
    bool allowsStrings_;
    BinaryPlistReader::Object list_{};
    std::vector<Entry> entries_;
    std::size_t root_ = 0;
    std::vector<Class> classes_;
    DictionaryShapes shapes_;
};

}  // namespace Base
