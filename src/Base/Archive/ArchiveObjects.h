#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/Archive/AllowedClasses.h"
#include "Base/Archive/BinaryPlistReader.h"

namespace Base {

/// The entries of a keyed archive's "$objects", all of known and allowed classes.
///
/// `open` checks the archive's frame and looks at every entry once; work and memory are linear in the
/// archive's size. It does not follow the references between entries.
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
        std::uint16_t classIndex;  // for a classDescription: its index in the list of classes met
    };

    /// The largest dictionary that an archive may hold. No class of an archive has nearly as many keys.
    static constexpr std::size_t kMaxKeys = 16;

    /// Returns nothing and sets `refusal` if `archive` is not a keyed archive or holds anything that
    /// `allowed` does not list.
    [[nodiscard]] static std::optional<ArchiveObjects> open(std::span<const std::uint8_t> archive,
                                                            const AllowedClasses& allowed,
                                                            const UnarchivingLimits& limits,
                                                            std::string& refusal);

    [[nodiscard]] const BinaryPlistReader& plist() const { return plist_; }
    [[nodiscard]] const Entry& root() const { return entries_[root_]; }
    /// The entry that stands for nil.
    [[nodiscard]] const Entry* nil() const { return entries_.data(); }
    /// The entry that the UID object `id` refers to; null if `id` is not a UID or points outside.
    [[nodiscard]] const Entry* target(BinaryPlistReader::ObjectId id) const;

  private:
    // A class that the archive describes, in the form that entries of that class take.
    struct Class {
        Kind kind;
        std::uint16_t classIndex;
    };

    ArchiveObjects(BinaryPlistReader plist, const AllowedClasses& allowed)
        : plist_(std::move(plist)), allowed_(allowed) {}

    // The name of an entry in a refusal.
    static std::string entryName(std::size_t index);
    bool readFrame(const UnarchivingLimits& limits, std::string& refusal);
    bool readTop(const BinaryPlistReader::Object& top, std::string& refusal);
    bool readEntries(std::string& refusal);
    bool readEntry(std::size_t index, std::string& refusal);
    bool readPlainValue(std::size_t index, const BinaryPlistReader::Object& object, std::string& refusal);
    bool readDictionary(std::size_t index, const BinaryPlistReader::Object& dictionary, std::string& refusal);
    // The object under `key`; a damaged one if there is none.
    [[nodiscard]] BinaryPlistReader::Object value(const BinaryPlistReader::Object& dictionary,
                                                  std::string_view key) const;

    // In ArchiveObjects+Classes.cpp.
    const Class* classDescribed(std::size_t index, std::string& refusal);
    std::optional<Class> readClass(std::size_t index, std::string& refusal) const;
    [[nodiscard]] bool classesAgree(const BinaryPlistReader::Object& list, std::string_view name) const;
    [[nodiscard]] std::optional<Class> allowedClass(std::string_view name) const;
    [[nodiscard]] bool allowsValue(std::string_view name) const;

    BinaryPlistReader plist_;
    AllowedClasses allowed_;
    BinaryPlistReader::Object list_{};
    std::vector<Entry> entries_;
    std::size_t root_ = 0;
    std::vector<Class> classes_;
};

}  // namespace Base
