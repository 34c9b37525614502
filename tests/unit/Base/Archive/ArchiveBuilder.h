#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/Archive/KeyedUnarchiver.h"

/// Assembles binary property lists and keyed archives by hand, honest ones and broken ones.
class PlistBuilder {
  public:
    using Id = std::size_t;

    explicit PlistBuilder(std::size_t referenceSize = 2, std::size_t offsetSize = 4)
        : referenceSize_(referenceSize), offsetSize_(offsetSize) {}

    /// Adds an object of exactly these bytes.
    Id raw(std::string bytes);
    /// Replaces the bytes of an object.
    void replace(Id id, std::string bytes) { objects_[id] = std::move(bytes); }
    Id ascii(std::string_view text) { return raw(header(0x50, text.size()) + std::string(text)); }
    Id utf16(const std::u16string& text);
    Id boolean(bool value) { return raw(value ? "\x09" : "\x08"); }
    Id integer(std::uint64_t value, std::size_t width = 8);
    Id uid(std::uint64_t value, std::size_t width = 2);
    Id array(const std::vector<Id>& members) { return raw(arrayBytes(members)); }
    Id dictionary(const std::vector<std::pair<Id, Id>>& pairs) { return raw(dictionaryBytes(pairs)); }
    /// With ASCII keys, stored separately for each dictionary.
    Id dictionary(const std::vector<std::pair<std::string, Id>>& pairs);

    [[nodiscard]] std::string arrayBytes(const std::vector<Id>& members) const;
    [[nodiscard]] std::string dictionaryBytes(const std::vector<std::pair<Id, Id>>& pairs) const;
    [[nodiscard]] std::string header(unsigned type, std::size_t count) const;
    [[nodiscard]] std::size_t objectCount() const { return objects_.size(); }

    /// The file, whose outermost object is `top`.
    [[nodiscard]] std::vector<std::uint8_t> finish(Id top) const;

    static std::string bigEndian(std::uint64_t value, std::size_t width);

  private:
    std::size_t referenceSize_;
    std::size_t offsetSize_;
    std::vector<std::string> objects_;
};

/// A keyed archive entry by entry. "$objects" begins with "$null"; an entry is named by its index.
class ArchiveBuilder {
  public:
    explicit ArchiveBuilder(std::size_t referenceSize = 2, std::size_t offsetSize = 4);

    using Id = PlistBuilder::Id;
    using Index = std::size_t;
    using Keys = std::vector<std::pair<std::string, Id>>;

    PlistBuilder plist;

    /// Adds an entry whose content is the plist object `content`.
    Index entry(Id content);
    Index string(std::string_view text) { return entry(plist.ascii(text)); }
    /// A description of a class, whose superclass is NSObject.
    Index classNamed(std::string_view name);
    Index object(Index classIndex, Keys keys);
    Index array(const std::vector<Index>& members, std::string_view className = "NSArray");
    Index url(std::string_view relative, Index base = 0);
    /// An object of SampleLink with a target and a title.
    Index link(Index target, Index title);
    /// The plist UID that refers to an entry.
    Id ref(Index index) { return plist.uid(index); }

    /// The archive whose root is an array of these entries.
    [[nodiscard]] std::vector<std::uint8_t> finish(const std::vector<Index>& elements);
    /// The archive with this root and these values of the frame. An id of 0 leaves the key out.
    [[nodiscard]] std::vector<std::uint8_t> finish(Index root, Id archiver, Id version);
    [[nodiscard]] Id archiverName() { return plist.ascii("NSKeyedArchiver"); }
    [[nodiscard]] Id version() { return plist.integer(100000); }

  private:
    std::vector<Id> entries_;
};

/// A list of one object of `className` with these keys.
[[nodiscard]] std::vector<std::uint8_t> listOf(ArchiveBuilder& archive, const char* className,
                                               const ArchiveBuilder::Keys& keys);

/// The refusal of `archive` under the classes of Samples.h, or the text of what it holds.
[[nodiscard]] std::string outcome(const std::vector<std::uint8_t>& archive);

/// The same of a list of one link.
[[nodiscard]] std::string linkOutcome(ArchiveBuilder& archive, ArchiveBuilder::Index target,
                                      ArchiveBuilder::Index title);

/// "read", or the refusal of `archive` under the classes of Samples.h and these limits.
[[nodiscard]] std::string outcomeWithin(const std::vector<std::uint8_t>& archive,
                                        const Base::UnarchivingLimits& limits);
